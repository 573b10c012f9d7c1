#include "transport/http_connection.h"

#include <limits>
#include <utility>

#include "transport/header_block.h"
#include "transport/keep_alive.h"
#include "transport/next_attempt.h"
#include "transport/reply_body.h"

namespace kest {
namespace {

constexpr std::uint16_t defaultPort = 80;

// Closes a connection when a step fails or throws: what is then left on it belongs to no exchange.
class CloseUnlessKept {
 public:
  explicit CloseUnlessKept(HttpConnection& guarded) : connection(guarded) {}
  CloseUnlessKept(const CloseUnlessKept&) = delete;
  CloseUnlessKept& operator=(const CloseUnlessKept&) = delete;
  ~CloseUnlessKept() {
    if (!isKept) connection.Close();
  }

  bool KeepIf(bool isGood) { return isKept = isGood; }

 private:
  HttpConnection& connection;
  bool isKept = false;
};

}  // namespace

HttpConnection::~HttpConnection() {
  HttpConnection::Close();
}

void HttpConnection::Close() {
  reply.keepAlive = false;
  hasUnreadBody = false;
  reader.Reset();
  socket.Close(SocketConnection::ordinaryClose);
}

bool HttpConnection::Run(HttpRequest& request, BodySource& body) {
  CloseUnlessKept guard(*this);
  HttpUrl proxy;
  proxy.host = proxyHost;
  proxy.port = proxyPort;
  request.proxy = std::move(proxy);
  return guard.KeepIf(RunAttempts(request, body));
}

bool HttpConnection::RunAttempts(HttpRequest& request, BodySource& body) {
  AttemptState state;
  for (;;) {
    if (!Open(request) || !SendHead(request)) return false;
    if (state.sendsBody && !SendBody(body, socket)) return false;
    if (reply.noReply) return true;
    if (!ReadHead(request)) return false;
    if (!reply.handleStatus || !PrepareNextAttempt(reply, request, state)) return true;
  }
}

bool HttpConnection::Open(const HttpRequest& request) {
  const HttpUrl& target = request.UsesProxy() ? request.proxy : request.url;
  const std::uint16_t port = target.port != 0 ? target.port : defaultPort;
  if (reply.keepAlive && port == connectedPort && connectedHost.EqualsIgnoringCase(target.host.Text())) {
    // What is left of the last reply would be taken for the beginning of the next one.
    return !std::exchange(hasUnreadBody, false) || SkipBody(reader, reply);
  }
  Close();
  if (!socket.Connect(target.host, port)) return false;
  connectedHost = target.host;
  connectedPort = port;
  return true;
}

bool HttpConnection::SendHead(const HttpRequest& request) {
  const String head = request.WriteHead();
  constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
  return head.Length() <= most && socket.Send(head.Characters(), static_cast<std::int32_t>(head.Length()));
}

bool HttpConnection::ReadHead(const HttpRequest& request) {
  reply.headers.Clear();
  if (!ReadStatusLine(reader, reply) || !ReadHeaderBlock(reader, reply.headers)) return false;
  reply.contentLength = ContentLength(reply.headers);
  reply.keepAlive = KeepsAlive(request, reply);
  // The answer to "HEAD" tells the length of a body that it does not have.
  hasUnreadBody = request.method.Compare("HEAD") != 0;
  return true;
}

String HttpConnection::ReadBody() {
  if (!std::exchange(hasUnreadBody, false)) return String();
  CloseUnlessKept guard(*this);
  String body = kest::ReadBody(reader, reply);
  guard.KeepIf(reply.headers.Find(header::contentLength) < 0 ||
               static_cast<std::int32_t>(body.Length()) == reply.contentLength);
  return body;
}

}  // namespace kest
