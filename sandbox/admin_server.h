// The admin port: HTTP/1.1 on a socket of its own, one request a connection. It owns the socket and the connections;
// the io_context that runs them and the routes are lent to it. Everything runs on the thread of that io_context.
#pragma once

#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/steady_timer.hpp>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "admin_routes.h"

namespace spdlog {
class logger;
}

namespace sandbox {

class AdminConnection;

class AdminServer {
 public:
  AdminServer(boost::asio::io_context& runner, AdminRoutes& served, std::shared_ptr<spdlog::logger> itsLog);
  ~AdminServer();

  /// Listens on a loopback address; port 0 takes a free one. Returns the port. Throws std::runtime_error with the
  /// reason in words, also when the address is not a loopback address.
  std::uint16_t Listen(const std::string& address, std::uint16_t port);

  /// Goes on to accept connections where it could not for lack of memory. The io_context was stopped then.
  void Accept();

  /// Takes no new connection and closes all that are open.
  void Stop();

 private:
  void OnAccepted(boost::system::error_code error, boost::asio::ip::tcp::socket socket);
  void OnOver(AdminConnection* connection);

  boost::asio::io_context& io;
  boost::asio::ip::tcp::acceptor acceptor;
  boost::asio::steady_timer pause;
  AdminRoutes& routes;
  const std::shared_ptr<spdlog::logger> log;
  std::set<AdminConnection*> connections;  // each takes itself out when it is destroyed
  bool accepting = false;
  // What connections call when they end, which may be after this object: they live as long as the io_context.
  const std::shared_ptr<AdminServer*> self = std::make_shared<AdminServer*>(this);
};

}  // namespace sandbox
