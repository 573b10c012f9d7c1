#include "admin_server.h"

#include <spdlog/spdlog.h>

#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/read.hpp>
#include <boost/beast/http/string_body.hpp>
#include <boost/beast/http/write.hpp>
#include <functional>
#include <optional>
#include <new>
#include <stdexcept>
#include <utility>

#include "listening.h"
#include "server_limits.h"

namespace sandbox {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using Tcp = asio::ip::tcp;
using Error = boost::system::error_code;

namespace {

// What a browser is told with every reply: nothing of a page but the port's own files runs, no other site may embed or
// read what is here, and nothing is kept.
constexpr std::pair<const char*, const char*> protection[] = {
    {"Content-Security-Policy",
     "default-src 'none'; script-src 'self'; style-src 'self'; img-src 'self'; connect-src 'self'; "
     "base-uri 'none'; form-action 'none'; frame-ancestors 'none'; require-trusted-types-for 'script'"},
    {"Cross-Origin-Resource-Policy", "same-origin"},
    {"Cross-Origin-Opener-Policy", "same-origin"},
    {"X-Content-Type-Options", "nosniff"},
    {"Referrer-Policy", "no-referrer"},
    {"Cache-Control", "no-store"},
};

}  // namespace

/// Reads a request, has it answered, writes the reply, closes. Keeps itself alive while an operation is under way.
class AdminConnection : public std::enable_shared_from_this<AdminConnection> {
 public:
  AdminConnection(Tcp::socket connected, AdminRoutes& served, std::function<void(AdminConnection*)> whenOver)
      : stream(std::move(connected)), routes(served), over(std::move(whenOver)) {
    parser.header_limit(longestAdminHead);
    parser.body_limit(longestAdminBody);
  }

  ~AdminConnection() { over(this); }

  void Start() {
    stream.expires_after(adminTime);
    http::async_read(stream, buffer, parser,
                     [self = shared_from_this()](Error error, std::size_t) { self->OnRequest(error); });
  }

  void Close() { stream.close(); }

 private:
  void OnRequest(Error error) {
    if (!error) return Send(routes.Answer(Request()));
    if (error == http::error::body_limit) return Send(AdminError(413, "the body is larger than 64 KB"));
    if (error == http::error::buffer_overflow) return Send(AdminError(413, "the chunks carry too much beside a body"));
    if (error == http::error::header_limit) return Send(AdminError(431, "the head is larger than 16 KB"));
    const bool malformed = error.category() == make_error_code(http::error::bad_field).category() &&
                           error != http::error::end_of_stream && error != http::error::partial_message;
    if (malformed) Send(AdminError(400, "this is not HTTP/1.1"));
  }

  AdminRequest Request() {
    const auto& message = parser.get();
    const auto text = [](auto view) { return std::string(view.data(), view.size()); };
    bool repeats = false;
    for (const auto field : {http::field::host, http::field::origin, http::field::content_type}) {
      repeats = repeats || message.count(field) > 1;
    }
    return {text(message.method_string()),
            text(message.target()),
            repeats,
            text(message[http::field::host]),
            text(message[http::field::origin]),
            text(message[http::field::content_type]),
            message.body()};
  }

  void Send(AdminReply answer) {
    reply.result(static_cast<unsigned>(answer.status));
    reply.set(http::field::content_type, answer.contentType);
    for (const auto& [name, value] : protection) reply.set(name, value);
    if (!answer.allow.empty()) reply.set(http::field::allow, answer.allow);
    reply.keep_alive(false);
    reply.body() = std::move(answer.body);
    reply.prepare_payload();
    stream.expires_after(adminTime);
    http::async_write(stream, reply, [self = shared_from_this()](Error error, std::size_t) {
      if (error) return;
      Error ignored;
      self->stream.socket().shutdown(Tcp::socket::shutdown_send, ignored);
      self->stream.expires_after(drainTime);
      self->Drain();
    });
  }

  void Drain() {
    rest.resize(8192);
    stream.async_read_some(asio::buffer(rest), [self = shared_from_this()](Error error, std::size_t) {
      if (!error) self->Drain();
    });
  }

  beast::tcp_stream stream;
  AdminRoutes& routes;
  const std::function<void(AdminConnection*)> over;
  // The extension of a chunk and the fields behind the last one stay in it until they end: the limits of head and body
  // do not see them.
  beast::flat_buffer buffer{longestAdminHead + longestAdminBody};
  http::request_parser<http::string_body> parser;
  http::response<http::string_body> reply;
  std::string rest;
};

AdminServer::AdminServer(asio::io_context& runner, AdminRoutes& served, std::shared_ptr<spdlog::logger> itsLog)
    : io(runner), acceptor(runner), pause(runner), routes(served), log(std::move(itsLog)) {}

AdminServer::~AdminServer() {
  *self = nullptr;
}

std::uint16_t AdminServer::Listen(const std::string& address, std::uint16_t port) {
  Error error;
  const asio::ip::address numeric = asio::ip::make_address(address, error);
  if (!error && !numeric.is_loopback()) {
    throw std::runtime_error("the admin port can listen on a loopback address alone, such as 127.0.0.1, and " +
                             address + " is none");
  }
  ListenOn(acceptor, address, port);
  Accept();
  return acceptor.local_endpoint().port();
}

void AdminServer::Accept() {
  if (accepting || !acceptor.is_open() || connections.size() >= mostAdminConnections) return;
  try {
    acceptor.async_accept([this](Error error, Tcp::socket socket) { OnAccepted(error, std::move(socket)); });
    accepting = true;
  } catch (const std::bad_alloc&) {
    io.stop();
  }
}

void AdminServer::OnAccepted(Error error, Tcp::socket socket) {
  accepting = false;
  if (error == asio::error::operation_aborted || !acceptor.is_open()) return;
  if (!error) {
    const auto over = [server = self](AdminConnection* gone) {
      if (*server) (*server)->OnOver(gone);
    };
    const auto connection = std::make_shared<AdminConnection>(std::move(socket), routes, over);
    connections.insert(connection.get());
    connection->Start();
    return Accept();
  }
  // As at the other port: file descriptors come back as connections end.
  log->error("a connection to the admin port could not be accepted: {}", error.message());
  pause.expires_after(std::chrono::milliseconds(100));
  pause.async_wait([this](Error stopped) {
    if (!stopped) Accept();
  });
}

void AdminServer::OnOver(AdminConnection* connection) {
  connections.erase(connection);
  Accept();
}

void AdminServer::Stop() {
  Error ignored;
  acceptor.close(ignored);
  pause.cancel();
  for (AdminConnection* connection : connections) connection->Close();
}

}  // namespace sandbox
