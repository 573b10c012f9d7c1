// Every reason for which a request is refused, in one table: its HTTP status and the plain line that goes into the log
// and into the reply. The lines are constant and quote nothing that a client sent, so a refusal cannot carry a card
// number or a key into the log. Constant data: any thread may read it.
#pragma once

#include <exception>

namespace sandbox {

enum class Refusal {
  RequestLine,
  Target,
  TargetCharacter,
  Method,
  HttpVersion,
  HeaderLine,
  HeaderOrder,
  AcceptValue,
  HostValue,
  LengthMissing,
  LengthValue,
  ProxyConnectionValue,
  ConnectionIdValue,
  HeadNotHttp,
  HeadTooLarge,
  BodyTooLarge,
  BodiesTooLarge,
  RepliesTooLarge,
  BodyTooLong,
  CutShort,
  TooSlow,
  BodyNotBase64,
  HandshakePath,
  RsaLength,
  RsaTooLong,
  RsaBlock,
  RsaEnd,
  ConnectionUnknown,
  ConnectionUsed,
  ConnectionExpired,
  CipherLength,
  CipherPadding,
  MessageEnd,
  MessageShort,
  Digest,
  DigestWithoutZero,
  HeaderBlock,
  FieldsTooMany,
  HandshakeFields,
  ProtocolVersion,
  ClientKey,
  ClientChallengeForm,
  ClientChallenge,
  ServerChallenge,
  SessionPath,
  Service,
  SessionsFull,
  Internal,
};

/// The number of reasons; they count from 0 without gaps.
constexpr int refusalCount = static_cast<int>(Refusal::Internal) + 1;

/// Returns the HTTP status that tells a client of this refusal.
int RefusalStatus(Refusal refusal);

/// Returns the reason in words: one line of printable ASCII without its end.
const char* RefusalReason(Refusal refusal);

/// Leaves the checking of a request; whoever reads the request off the socket turns it into the reply.
class Refused : public std::exception {
 public:
  explicit Refused(Refusal why) : refusal(why) {}
  const char* what() const noexcept override { return RefusalReason(refusal); }

  const Refusal refusal;
};

}  // namespace sandbox
