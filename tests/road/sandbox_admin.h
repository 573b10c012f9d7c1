// The admin port of the server that runs beside a road test, as its environment names it (KEST_ADMIN): asks for faults
// and tells what the server saw. One thread at a time.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

namespace kest_road {

class SandboxAdmin {
 public:
  SandboxAdmin();

  // Answers the document at `path`. Throws std::runtime_error when the status is not 200.
  nlohmann::json Get(const std::string& path) const { return Send("GET", path, ""); }
  // Asks for faults, each an object as the server's page describes them, in this order.
  void AskFor(const nlohmann::json& faults) const { Send("POST", "/faults", nlohmann::json{{"faults", faults}}.dump()); }
  // Forgets faults, requests and sales.
  void Reset() const { Send("POST", "/reset", "{}"); }
  std::uint64_t Sales() const { return Get("/state").at("sales").get<std::uint64_t>(); }

 private:
  nlohmann::json Send(const std::string& method, const std::string& path, const std::string& body) const;

  std::string host;
  std::uint16_t port;
};

}  // namespace kest_road
