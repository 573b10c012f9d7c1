// What a test can ask the server to do wrong: one fault, the table of its kinds and its form in JSON. Plain values, no
// state: any thread may call.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace sandbox {

enum class FaultKind {
  Delay,
  Close,
  WrongDigest,
  DigestWithoutZero,
  WrongClientChallenge,
  ChangedServerChallenge,
  BadPadding,
  BadBase64,
  CutBody,
  ContentLength,
  Status,
  Field,
  Headers,
};

enum class FaultPlace { Handshake, Request };

/// A fault and the parameters of its kind; those that the kind does not have stay as they are here.
struct Fault {
  FaultKind kind = FaultKind::Delay;
  FaultPlace at = FaultPlace::Request;
  std::string service;                  // the one that it is for; empty: every service
  std::optional<std::uint64_t> left;    // messages that it still applies to; nothing: without end
  std::chrono::milliseconds delay{0};   // of Delay
  std::size_t bytes = 0;                // of Close and CutBody: how many are sent
  int status = 0;                       // of Status
  std::string reason;                   // of Status; empty: the usual one
  std::optional<std::string> location;  // of Status
  std::string name;                     // of Field
  std::optional<std::string> value;     // of Field: nothing removes it; of ContentLength
  std::vector<std::string> lines;       // of Headers, without their ends
  std::string asked;                    // the object of JSON that asked for it
  std::uint64_t id = 0;                 // given by the table that holds it
};

struct FaultKindRow {
  FaultKind kind;
  const char* name;
  const char* parameters;  // in words, for the page on the sandbox
  const char* meaning;
};

extern const FaultKindRow faultKinds[];
extern const std::size_t faultKindCount;

/// How many answers a fault gives at most whose status makes a client try again without a limit of its own.
constexpr std::uint64_t mostEndlessAnswers = 100;

/// How many faults wait at most, and of how much JSON altogether.
constexpr std::size_t mostFaults = 1000;
constexpr std::size_t mostFaultBytes = 1024 * 1024;

/// Returns the name that a kind has in JSON and in the log.
const char* FaultKindName(FaultKind kind);

/// Tells where the JSON of faults is wrong and what, in words.
class FaultError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Reads {"kind": "..."}. Throws FaultError with the first thing that is wrong.
FaultKind ReadFaultKind(const std::string& text);

/// Reads {"faults": [...]}. Throws FaultError with the first thing that is wrong.
std::vector<Fault> ReadFaults(const std::string& text);

}  // namespace sandbox
