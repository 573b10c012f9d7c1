#include "transport/keep_alive.h"

#include <cstring>

namespace kest {
namespace {

int CompareVersion(const String& version, const char* with) {
  return std::strcmp(version.Text(), with);
}

}  // namespace

bool KeepsAlive(const HttpRequest& request, const HttpReply& reply) {
  const bool usesProxy = request.UsesProxy();
  if (CompareVersion(request.version, "1.0") <= 0) {
    const char* crossedField = usesProxy ? header::connection : header::proxyConnection;
    if (request.headers.Get(crossedField).EqualsIgnoringCase(header::keepAliveToken)) return false;
  }
  const String token = reply.headers.Get(usesProxy ? header::proxyConnection : header::connection);
  if (CompareVersion(request.version, "1.1") >= 0) return !token.EqualsIgnoringCase(header::closeToken);
  return token.EqualsIgnoringCase(header::keepAliveToken);
}

}  // namespace kest
