#include "transport/next_attempt.h"

#include <utility>

namespace kest {
namespace {

// Takes one from a counter; false when it was used up already.
bool TakeOne(std::uint16_t& left) {
  if (left == 0) return false;
  --left;
  return true;
}

bool FollowRedirect(const HttpReply& reply, HttpRequest& request, AttemptState& state) {
  const String location = reply.headers.Get(header::location);
  if (location.IsEmpty()) return false;
  // Any other method may have changed something on the server already.
  if (request.method.Compare("GET") != 0 && request.method.Compare("HEAD") != 0) return false;
  if (!TakeOne(state.redirectsLeft)) return false;
  request.url.Merge(HttpUrl::Parse(location));
  return true;
}

bool UseProxy(const HttpReply& reply, HttpRequest& request) {
  const String location = reply.headers.Get(header::location);
  if (location.IsEmpty()) return false;
  HttpUrl proxy = HttpUrl::Parse(location);
  // Without a host it names no proxy; to go on would mean to go past the one that is set.
  if (proxy.host.IsEmpty()) return false;
  request.proxy = std::move(proxy);
  return true;
}

bool ProvideLength(HttpRequest& request, AttemptState& state) {
  request.headers.Set(header::contentLength, "0");
  // A head that says "0" has no body behind it.
  state.sendsBody = false;
  return true;
}

}  // namespace

bool PrepareNextAttempt(const HttpReply& reply, HttpRequest& request, AttemptState& state) {
  switch (reply.status) {
    case 301:
    case 302:
    case 303:
      return FollowRedirect(reply, request, state);
    case 305:
      return UseProxy(reply, request);
    case 408:
      return TakeOne(state.timeoutRetriesLeft);
    case 411:
      return ProvideLength(request, state);
    default:
      return false;
  }
}

}  // namespace kest
