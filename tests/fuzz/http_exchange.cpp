// An HTTP exchange with a server that answers what it likes: its outcome does not depend on the pieces in which the
// bytes arrive, its requests are well-formed whatever a redirect says, memory grows with what arrives, nothing stays
// open. The input's first line has the method and whether further attempts are made; then come the bytes that the
// server sends on each connection, parted by a line "----".
#include <algorithm>

#include "fuzz/target.h"
#include "support/scripted_sockets.h"
#include "transport/http_connection.h"

namespace kest::testing {
namespace {

const std::string requestBody = "body";

// Every name leads to one server.
class AnyHostSockets : public ScriptedSockets {
 public:
  const os::HostEntry* gethostbyname(const char* name) override {
    hosts[name] = {"10.0.0.1"};
    return ScriptedSockets::gethostbyname(name);
  }
};

struct Plan {
  std::string method;
  bool handlesStatus = false;
  std::vector<std::string> streams;

  std::size_t Bytes() const {
    std::size_t bytes = 0;
    for (const std::string& stream : streams) bytes += stream.size();
    return bytes;
  }
};

struct Outcome {
  bool isGood = false, keepsAlive = false;
  int status = 0, contentLength = 0;
  std::string reason, body;
  Pairs headers;
  std::vector<std::string> addresses, sent;

  bool operator==(const Outcome& other) const {
    return isGood == other.isGood && keepsAlive == other.keepsAlive && status == other.status &&
           contentLength == other.contentLength && reason == other.reason && body == other.body &&
           headers == other.headers && addresses == other.addresses && sent == other.sent;
  }
};

Plan ReadPlan(Input input) {
  const std::string line = input.Line();
  Plan plan;
  plan.method = line.compare(0, 4, "POST") == 0 ? "POST" : line.compare(0, 4, "HEAD") == 0 ? "HEAD" : "GET";
  plan.handlesStatus = line.find("once") == std::string::npos;
  std::string rest = input.Rest();
  const std::string mark = "\n----\n";
  for (std::size_t end; (end = rest.find(mark)) != std::string::npos; rest.erase(0, end + mark.size())) {
    plan.streams.push_back(rest.substr(0, end));
  }
  plan.streams.push_back(rest);
  return plan;
}

void RunExchange(const Plan& plan, Outcome& outcome) {
  HttpRequest request;
  request.method = Kest(plan.method);
  request.url = HttpUrl::Parse("http://shop.example/start");
  request.headers.Add("Host", "shop.example");
  request.headers.Add("Content-Length", "4");
  TextSource source(Kest(requestBody));
  HttpConnection connection;
  connection.reply.handleStatus = plan.handlesStatus;
  outcome.isGood = connection.Run(request, source);
  outcome.status = connection.reply.status;
  outcome.reason = Plain(connection.reply.reason);
  outcome.contentLength = connection.reply.contentLength;
  outcome.headers = PairsOf(connection.reply.headers);
  outcome.body = Plain(connection.ReadBody());
  outcome.keepsAlive = connection.reply.keepAlive;
  HOLD(connection.ReadBody().IsEmpty());
}

Outcome Exchange(const Plan& plan, const std::vector<std::size_t>& pieces) {
  AnyHostSockets sockets;
  for (const std::string& stream : plan.streams) sockets.conversations.push_back({{stream}, nullptr, pieces});
  Outcome outcome;
  {
    const SystemInForce inForce(sockets);
    RunExchange(plan, outcome);
  }
  for (const ConnectionRecord& connection : sockets.connections) {
    outcome.addresses.push_back(connection.address);
    outcome.sent.push_back(connection.sent);
    HOLD(!connection.isOpen);
  }
  HOLD(sockets.OpenSockets() == 0);
  HOLD(sockets.Outstanding() == 0);
  // A block may be twice what has arrived, and a buffer besides; a claimed length makes none.
  HOLD(sockets.largestBlock <= 65536 + 64 * plan.Bytes());
  return outcome;
}

// Takes `expected` off the front.
bool Skip(std::string& text, const std::string& expected) {
  if (text.compare(0, expected.size(), expected) != 0) return false;
  text.erase(0, expected.size());
  return true;
}

// One request after the other and nothing else: no answer can put a line of its own into one.
int CountRequests(std::string sent, const std::string& method) {
  int count = 0;
  for (; !sent.empty(); ++count) {
    const std::string line = sent.substr(0, sent.find("\r\n"));
    const std::string version = " HTTP/1.0";
    HOLD(Skip(sent, line + "\r\n") && line.compare(0, method.size() + 1, method + " ") == 0);
    HOLD(line.size() >= version.size() && line.compare(line.size() - version.size(), version.size(), version) == 0);
    HOLD(line.find_first_of("\r\n") == std::string::npos);
    HOLD(Skip(sent, "Host: shop.example\r\n"));
    const bool hasBody = Skip(sent, "Content-Length: 4\r\n\r\n" + requestBody);
    HOLD(hasBody || Skip(sent, "Content-Length: 0\r\n\r\n"));
  }
  return count;
}

void HoldOutcome(const Plan& plan, const Outcome& outcome) {
  int requests = 0;
  for (const std::string& sent : outcome.sent) requests += CountRequests(sent, plan.method);
  HOLD(requests >= 1);
  if (!plan.handlesStatus) HOLD(requests == 1 && outcome.sent.size() == 1);
  if (!outcome.isGood) HOLD(outcome.body.empty());
  if (outcome.body.empty()) return;
  HOLD(plan.method != "HEAD");
  HOLD(static_cast<int>(outcome.body.size()) == outcome.contentLength);
  HOLD(std::any_of(plan.streams.begin(), plan.streams.end(),
                   [&](const std::string& stream) { return stream.find(outcome.body) != std::string::npos; }));
}

void Check(const Plan& plan) {
  const Outcome whole = Exchange(plan, {});
  HoldOutcome(plan, whole);
  HOLD(Exchange(plan, {1}) == whole);
  HOLD(Exchange(plan, {3, 1, 8, 2}) == whole);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::ReadPlan(kest::testing::Input(bytes, length)));
  return 0;
}
