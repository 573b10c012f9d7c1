// When may a connection carry another exchange?
#include "transport/keep_alive.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

struct Case {
  const char* version;
  bool usesProxy;
  const char* requestField;  // "Name: value", or null
  const char* replyField;
  bool isKept;
};

void AddField(HttpHeaderList& headers, const char* line) {
  if (line == nullptr) return;
  const std::string text = line;
  const std::size_t colon = text.find(": ");
  headers.Add(Kest(text.substr(0, colon)), Kest(text.substr(colon + 2)));
}

bool Decide(const Case& row) {
  HttpRequest request;
  request.version = row.version;
  if (row.usesProxy) request.proxy.host = "proxy";
  AddField(request.headers, row.requestField);
  HttpReply reply;
  AddField(reply.headers, row.replyField);
  return KeepsAlive(request, reply);
}

void Check(const std::vector<Case>& rows) {
  for (const Case& row : rows) {
    EXPECT_EQ(Decide(row), row.isKept) << "version '" << row.version << "' proxy " << row.usesProxy << " request '"
                                       << (row.requestField ? row.requestField : "") << "' reply '"
                                       << (row.replyField ? row.replyField : "") << "'";
  }
}

TEST(KeepAlive, OldRequestGoingStraightNeedsTheTokenInConnection) {
  Check({{"1.0", false, nullptr, "Connection: Keep-Alive", true},
         {"1.0", false, nullptr, "Connection: KEEP-alive", true},
         {"1.0", false, nullptr, "Connection: Close", false},
         {"1.0", false, nullptr, "Connection: Keep-Alive, x", false},
         {"1.0", false, nullptr, "Proxy-Connection: Keep-Alive", false},
         {"1.0", false, nullptr, nullptr, false}});
}

TEST(KeepAlive, OldRequestThroughAProxyNeedsTheTokenInProxyConnection) {
  Check({{"1.0", true, nullptr, "Proxy-Connection: Keep-Alive", true},
         {"1.0", true, nullptr, "proxy-connection: keep-alive", true},
         {"1.0", true, nullptr, "Proxy-Connection: close", false},
         {"1.0", true, nullptr, "Connection: Keep-Alive", false},
         {"1.0", true, nullptr, nullptr, false}});
}

// The gate is closed by asking to be kept in the field of the other way of connecting.
TEST(KeepAlive, OldRequestGoingStraightWithProxyConnectionKeepAliveIsNeverKept) {
  Check({{"1.0", false, "Proxy-Connection: Keep-Alive", "Connection: Keep-Alive", false},
         {"1.0", false, "Proxy-Connection: keep-ALIVE", "Connection: Keep-Alive", false},
         {"1.0", false, "proxy-connection: Keep-Alive", "Proxy-Connection: Keep-Alive", false},
         {"1.0", false, "Proxy-Connection: Keep-Alive", nullptr, false},
         {"1.0", false, "Proxy-Connection: Close", "Connection: Keep-Alive", true},
         {"1.0", false, "Proxy-Connection: x", "Connection: Keep-Alive", true},
         {"1.0", false, "Connection: Keep-Alive", "Connection: Keep-Alive", true},
         {"1.0", false, "Connection: Close", "Connection: Keep-Alive", true}});
}

TEST(KeepAlive, OldRequestThroughAProxyWithConnectionKeepAliveIsNeverKept) {
  Check({{"1.0", true, "Connection: Keep-Alive", "Proxy-Connection: Keep-Alive", false},
         {"1.0", true, "connection: KEEP-ALIVE", "Proxy-Connection: Keep-Alive", false},
         {"1.0", true, "Connection: Close", "Proxy-Connection: Keep-Alive", true},
         {"1.0", true, "Connection: x", "Proxy-Connection: Keep-Alive", true},
         {"1.0", true, "Proxy-Connection: Keep-Alive", "Proxy-Connection: Keep-Alive", true},
         {"1.0", true, "Proxy-Connection: Keep-Alive", "Proxy-Connection: Close", false},
         {"1.0", true, "Proxy-Connection: Keep-Alive", nullptr, false}});
}

TEST(KeepAlive, NewRequestIsKeptUnlessTheTokenIsClose) {
  Check({{"1.1", false, nullptr, nullptr, true},
         {"1.1", false, nullptr, "Connection: close", false},
         {"1.1", false, nullptr, "Connection: CLOSE", false},
         {"1.1", false, nullptr, "Connection: x", true},
         {"1.1", false, nullptr, "Connection: Keep-Alive", true},
         {"1.1", false, nullptr, "Proxy-Connection: close", true},
         {"1.1", true, nullptr, nullptr, true},
         {"1.1", true, nullptr, "Proxy-Connection: cLOSE", false},
         {"1.1", true, nullptr, "Connection: close", true}});
}

TEST(KeepAlive, NewRequestHasNoGate) {
  Check({{"1.1", false, "Proxy-Connection: Keep-Alive", nullptr, true},
         {"1.1", true, "Connection: Keep-Alive", nullptr, true},
         {"1.0x", false, "Proxy-Connection: Keep-Alive", "Connection: Keep-Alive", true},
         {"1.01", true, "Connection: Keep-Alive", "Proxy-Connection: Keep-Alive", true}});
}

TEST(KeepAlive, VersionsCompareAsText) {
  Check({{"", false, nullptr, nullptr, false},
         {"", false, nullptr, "Connection: Keep-Alive", true},
         {"", false, "Proxy-Connection: Keep-Alive", "Connection: Keep-Alive", false},
         {"0.9", false, "Proxy-Connection: Keep-Alive", "Connection: Keep-Alive", false},
         {"1", false, "Proxy-Connection: Keep-Alive", "Connection: Keep-Alive", false},
         {"1.0x", false, nullptr, nullptr, false},
         {"1.10", false, nullptr, nullptr, true},
         {"2", false, nullptr, nullptr, true},
         {"a", false, nullptr, nullptr, true},
         {"10.0", false, nullptr, nullptr, true},
         {"\xFF", false, nullptr, nullptr, true}});
}

}  // namespace
}  // namespace kest::testing
