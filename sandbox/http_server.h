// Serves the commerce protocol over HTTP: one request a connection, the reply, then the end. It owns the listening
// socket and the connections and writes one line a request to the log; the commerce server is lent to it. Everything
// runs on the thread that calls Run; Stop alone may be called from any other.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "commerce_server.h"

namespace spdlog {
class logger;
}

namespace sandbox {

struct HttpLimits {
  std::size_t maxHead = 64 * 1024;              // bytes
  std::size_t maxBody = 32 * 1024 * 1024;       // bytes
  std::size_t maxConnections = 64;              // more wait in the system's queue until one ends
  std::chrono::milliseconds clientTime{30000};  // for the whole request to arrive, and again for the reply to be taken
};

class HttpServer {
 public:
  HttpServer(CommerceServer& commerceServer, HttpLimits limits, std::shared_ptr<spdlog::logger> log);
  ~HttpServer();

  /// Listens on a numeric address; port 0 takes a free one. Throws std::runtime_error with the reason in words.
  void Listen(const std::string& address, std::uint16_t port);

  /// Returns the numeric address that it listens on.
  std::string Host() const;

  /// Returns the port that it listens on.
  std::uint16_t Port() const;

  /// Makes SIGTERM and SIGINT do what Stop does. A second such signal then ends the process as it would any other.
  void StopOnSignals();

  /// Serves until Stop; returns when the last reply is out.
  void Run();

  /// Takes no new connection and closes those on which nothing has arrived; what has begun to arrive is still answered.
  void Stop();

 private:
  struct Core;
  std::unique_ptr<Core> core;
};

}  // namespace sandbox
