// Talks to the admin port of a server as a test's HTTP client would.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "sandbox/test_client.h"

namespace sandboxtest {

struct AdminAnswer {
  int status = -1;  // -1: no whole reply came
  Fields headers;
  std::string body;
  nlohmann::json json;  // discarded when the body is none
};

class AdminClient {
 public:
  explicit AdminClient(std::uint16_t adminPort) : port(adminPort) {}

  /// Sends a request as it stands and reads the reply.
  AdminAnswer Send(const std::string& bytes) const;

  AdminAnswer Get(const std::string& target) const;
  AdminAnswer Post(const std::string& target, const std::string& body = "") const;

 private:
  const std::uint16_t port;
};

}  // namespace sandboxtest
