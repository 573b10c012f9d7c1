// Serves the commerce protocol over HTTP: one request a connection, the reply, then the end. It owns the listening
// sockets and the connections and writes one line a request to the log; all else is lent to it. Everything runs on the
// thread that calls Run; Stop alone may be called from any other.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "commerce_server.h"
#include "fault_table.h"
#include "request_log.h"

namespace spdlog {
class logger;
}

namespace sandbox {

class AdminRoutes;

struct HttpLimits {
  std::size_t maxHead = 16 * 1024;              // bytes
  std::size_t maxBody = 32 * 1024 * 1024;       // bytes
  std::size_t maxConnections = 1024;            // more wait in the system's queue until one ends
  std::size_t maxReplies = 64 * 1024 * 1024;    // bytes of all replies that wait to be taken and are not small
  std::chrono::milliseconds clientTime{30000};  // for the whole request to arrive, and again for the reply to be taken
};

class HttpServer {
 public:
  /// Applies the faults to what it answers and adds each request to the log of requests; both may be null.
  HttpServer(CommerceServer& commerceServer, HttpLimits limits, std::shared_ptr<spdlog::logger> log,
             FaultTable* faults = nullptr, RequestLog* requests = nullptr);
  ~HttpServer();

  /// Listens on a numeric address; port 0 takes a free one. Throws std::runtime_error with the reason in words.
  void Listen(const std::string& address, std::uint16_t port);

  /// Serves the routes of the admin port as well, on a loopback address of their own; port 0 takes a free one. Returns
  /// the port. Throws std::runtime_error with the reason in words.
  std::uint16_t ListenAdmin(AdminRoutes& routes, const std::string& address, std::uint16_t port);

  /// Returns the numeric address that it listens on.
  std::string Host() const;

  /// Returns the port that it listens on.
  std::uint16_t Port() const;

  /// Makes SIGTERM and SIGINT do what Stop does. A second such signal then ends the process as it would any other.
  void StopOnSignals();

  /// Has the function called again and again, that long after each call, while Run serves; for one function alone.
  void Every(std::chrono::milliseconds interval, std::function<void()> regular);

  /// Serves until Stop; returns when the last reply is out.
  void Run();

  /// Takes no new connection and closes those on which nothing has arrived; what has begun to arrive is still answered,
  /// without the delay that a fault asks for.
  void Stop();

 private:
  struct Core;
  std::unique_ptr<Core> core;
};

}  // namespace sandbox
