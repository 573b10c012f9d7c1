// The reply codes that call for another attempt of an exchange: redirects, use proxy, request time-out, length
// required. It belongs to the thread of its exchange.
#pragma once

#include <cstdint>

#include "transport/http_reply.h"
#include "transport/http_request.h"

namespace kest {

// What is left to try in one exchange.
struct AttemptState {
  std::uint16_t redirectsLeft = 5;
  std::uint16_t timeoutRetriesLeft = 5;
  bool sendsBody = true;  // until a server answers that it wants a length
};

// Changes `request` into the one that `reply` asks for. False, and the request is as it was, when there is no further
// attempt: the reply stands. "Use proxy" and "length required" are deliberately not counted. Throws
// Qor::MemoryException when there is no memory.
bool PrepareNextAttempt(const HttpReply& reply, HttpRequest& request, AttemptState& state);

}  // namespace kest
