// What the server remembers of the requests that it has answered, for the admin port: the last ones alone, and nothing
// secret of them. One thread at a time may use a log.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <vector>

#include "fields.h"
#include "wall_time.h"

namespace sandbox {

/// One answered request. A refused one has what was read of it before it was refused.
struct RequestRecord {
  std::uint64_t number = 0;         // counts from 1; given by the log
  std::string time;                 // of the answer, in UTC, as ISO 8601 writes it; given by the log
  std::string peer;                 // address and port
  std::string path;                 // empty when the head was refused
  std::string kind;                 // "handshake" or "request"; empty when the head was refused
  int status = 0;                   // of the answer
  std::string refusal;              // why it was refused; empty when it was not
  std::vector<std::string> faults;  // the kinds of those that were applied
  FieldList request;                // as they may be shown
  FieldList reply;
};

class RequestLog {
 public:
  static constexpr std::size_t most = 1000;  // requests
  static constexpr std::size_t mostBytes = 16 * 1024 * 1024;

  /// Makes a log that drops its oldest requests when their texts take more than `limit` bytes together; the newest
  /// one is always kept. The clock dates them.
  explicit RequestLog(std::size_t limit = mostBytes, WallClock clock = std::chrono::system_clock::now)
      : byteLimit(limit), wallTime(std::move(clock)) {}

  /// Adds a request, with the next number and the time.
  void Add(RequestRecord record);

  /// Forgets all requests; numbers begin with 1 again.
  void Clear();

  /// Returns the requests that are still known, the oldest first.
  const std::deque<RequestRecord>& Requests() const { return records; }

  /// Returns how many were added.
  std::uint64_t Count() const { return count; }

  /// Returns how many of those were refused.
  std::uint64_t Refused() const { return refused; }

 private:
  const std::size_t byteLimit;
  const WallClock wallTime;
  std::deque<RequestRecord> records;
  std::size_t bytes = 0;
  std::uint64_t count = 0;
  std::uint64_t refused = 0;
};

}  // namespace sandbox
