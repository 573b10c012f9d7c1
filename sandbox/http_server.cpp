#include "http_server.h"

#include <spdlog/spdlog.h>

#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>
#include <csignal>
#include <new>
#include <set>

#include "admin_server.h"
#include "http_connection.h"
#include "listening.h"

namespace sandbox {

namespace asio = boost::asio;
using Tcp = asio::ip::tcp;
using Error = boost::system::error_code;

struct HttpServer::Core {
  Core(CommerceServer& commerceServer, HttpLimits limits, std::shared_ptr<spdlog::logger> log, FaultTable* faults,
       RequestLog* requests)
      : context{commerceServer, limits, std::move(log), faults, requests} {}
  ~Core() { leaving = true; }

  void Accept();
  void OnAccepted(Error error, Tcp::socket socket);
  void OnOver(HttpConnection* connection);
  void Stop();
  void Run();
  void GoOnAfter(const char* failure);
  void WaitForRegular();

  ConnectionContext context;
  std::set<HttpConnection*> connections;  // each takes itself out when it is destroyed
  bool accepting = false;
  bool leaving = false;  // the acceptor is going, although connections may still end
  // Last, so that it goes first: destroying it destroys the connections that wait in it, and they come to the set
  // above.
  asio::io_context io;
  Tcp::acceptor acceptor{io};
  asio::signal_set signals{io};
  asio::steady_timer pause{io};
  asio::steady_timer regularTimer{io};
  std::chrono::milliseconds regularInterval{0};
  std::function<void()> regular;
  std::unique_ptr<AdminServer> admin;
};

void HttpServer::Core::Accept() {
  if (accepting || !acceptor.is_open() || connections.size() >= context.limits.maxConnections) return;
  try {
    acceptor.async_accept([this](Error error, Tcp::socket socket) { OnAccepted(error, std::move(socket)); });
    accepting = true;
  } catch (const std::bad_alloc&) {
    io.stop();  // a connection that ends calls this, where nothing may be thrown; Run tries again
  }
}

void HttpServer::Core::OnAccepted(Error error, Tcp::socket socket) {
  accepting = false;
  if (error == asio::error::operation_aborted) return;
  if (!error) {
    const auto connection =
        std::make_shared<HttpConnection>(std::move(socket), context, [this](HttpConnection* gone) { OnOver(gone); });
    connections.insert(connection.get());
    connection->Start();
    return Accept();
  }
  // Most likely the process is out of file descriptors. They come back as connections end; trying at once would spin.
  context.log->error("a connection could not be accepted: {}", error.message());
  pause.expires_after(std::chrono::milliseconds(100));
  pause.async_wait([this](Error stopped) {
    if (!stopped) Accept();
  });
}

void HttpServer::Core::OnOver(HttpConnection* connection) {
  connections.erase(connection);
  if (!leaving) Accept();
}

void HttpServer::Core::Stop() {
  if (!acceptor.is_open()) return;
  context.log->info("stopping: {} connections are open", connections.size());
  Error ignored;
  acceptor.close(ignored);
  signals.clear(ignored);
  signals.cancel(ignored);
  pause.cancel();
  regularTimer.cancel();
  if (admin) admin->Stop();
  context.stopping = true;
  for (HttpConnection* connection : connections) {
    connection->CloseIfIdle();
    connection->EndDelay();
  }
}

// What failed has lost its connection and nothing else.
void HttpServer::Core::Run() {
  for (;;) {
    try {
      io.run();
      if (!acceptor.is_open()) return;
      GoOnAfter("not enough memory to accept a connection");
    } catch (const std::exception& error) {
      GoOnAfter(error.what());
    }
  }
}

void HttpServer::Core::GoOnAfter(const char* failure) {
  context.log->error("the server failed at a connection and goes on: {}", failure);
  io.restart();
  Accept();
  if (admin) admin->Accept();
  WaitForRegular();
}

void HttpServer::Core::WaitForRegular() {
  if (!regular) return;
  regularTimer.expires_after(regularInterval);
  regularTimer.async_wait([this](Error error) {
    if (error || !acceptor.is_open()) return;
    regular();
    WaitForRegular();
  });
}

HttpServer::HttpServer(CommerceServer& commerceServer, HttpLimits limits, std::shared_ptr<spdlog::logger> log,
                       FaultTable* faults, RequestLog* requests)
    : core(std::make_unique<Core>(commerceServer, limits, std::move(log), faults, requests)) {}

HttpServer::~HttpServer() = default;

void HttpServer::Listen(const std::string& address, std::uint16_t port) {
  ListenOn(core->acceptor, address, port);
  core->Accept();
}

std::uint16_t HttpServer::ListenAdmin(AdminRoutes& routes, const std::string& address, std::uint16_t port) {
  core->admin = std::make_unique<AdminServer>(core->io, routes, core->context.log);
  return core->admin->Listen(address, port);
}

std::string HttpServer::Host() const {
  return core->acceptor.local_endpoint().address().to_string();
}

std::uint16_t HttpServer::Port() const {
  return core->acceptor.local_endpoint().port();
}

void HttpServer::StopOnSignals() {
  core->signals.add(SIGINT);
  core->signals.add(SIGTERM);
  core->signals.async_wait([this](Error error, int) {
    if (!error) core->Stop();
  });
}

void HttpServer::Every(std::chrono::milliseconds interval, std::function<void()> regular) {
  core->regularInterval = interval;
  core->regular = std::move(regular);
  core->WaitForRegular();
}

void HttpServer::Run() {
  core->Run();
}

void HttpServer::Stop() {
  asio::post(core->io, [this] { core->Stop(); });
}

}  // namespace sandbox
