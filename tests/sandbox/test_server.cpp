#include "sandbox/test_server.h"

#include <spdlog/sinks/ostream_sink.h>
#include <spdlog/spdlog.h>

#include <map>
#include <stdexcept>

namespace sandboxtest {
namespace {

std::shared_ptr<spdlog::logger> LogTo(std::ostream& stream) {
  auto log = std::make_shared<spdlog::logger>("test", std::make_shared<spdlog::sinks::ostream_sink_mt>(stream));
  log->set_pattern("%l %v");
  log->set_level(spdlog::level::debug);
  return log;
}

}  // namespace

const char* const testCatalogue = R"({
  "applications": [
    {"guid": "{11111111-2222-3333-4444-555555555555}", "products": [
      {"SKU": 1042, "Name": "Pen: blue", "Price": "1.50"},
      {"Price": "0.00", "Name": "Gruß", "SKU": "7", "Note": ""},
      {"SKU": 4294967295, "Name": "c", "Price": "999999999.99"}]},
    {"guid": "{11111111-2222-3333-4444-555555555555}", "version": "2.0", "products": []},
    {"guid": "only-two", "version": "2.0", "products": [{"SKU": 1, "Name": "a", "Price": "1.00"}]}
  ]
})";

std::string LargeCatalogue() {
  std::string products;
  for (int i = 0; i < 100; i++) {
    products += std::string(i ? "," : "") + R"({"SKU": )" + std::to_string(i) + R"(, "Name": ")" +
                std::string(60000, 'n') + R"(", "Price": "1.00"})";
  }
  return std::string(R"({"applications": [{"guid": ")") + testGuid + R"(", "products": [)" + products + "]}]}";
}

const sandbox::KeyPair& SharedKey(unsigned bits) {
  static std::map<unsigned, sandbox::KeyPair> pairs;
  const auto found = pairs.find(bits);
  return found != pairs.end() ? found->second : pairs.emplace(bits, sandbox::KeyPair::Generate(bits)).first->second;
}

TestServer::TestServer(const TestServerOptions& options)
    : key(SharedKey(options.bits)),
      catalogue(sandbox::Catalogue::FromText(options.catalogue)),
      ledger(folder / "sales.db"),
      operations(catalogue, ledger),
      commerce(key, operations, options.sessions, MakeEnvironment(options)),
      routes({faults, requests, commerce, ledger}),
      server(commerce, options.http, LogTo(log), &faults, &requests) {
  if (!options.faults.empty()) faults.Append(sandbox::ReadFaults(options.faults));
  adminPort = server.ListenAdmin(routes, "127.0.0.1", 0);
  server.Listen("127.0.0.1", 0);
  port = server.Port();
  thread = std::thread([this] { server.Run(); });
}

TestServer::~TestServer() {
  StopAndReadLog();
}

std::string TestServer::StopAndReadLog() {
  if (thread.joinable()) {
    server.Stop();
    thread.join();
  }
  return log.str();
}

sandbox::Environment TestServer::MakeEnvironment(const TestServerOptions& options) {
  sandbox::Environment environment = sandbox::Environment::OfMachine();
  environment.now = [this] { return sandbox::Time(std::chrono::seconds(elapsed)); };
  if (options.duringHandshake) {
    environment.randomBytes = [during = options.duringHandshake, random = environment.randomBytes](std::size_t count) {
      during();
      return random(count);
    };
  }
  if (options.randomFails) {
    environment.randomBytes = [](std::size_t) -> std::string { throw std::runtime_error("no randomness left"); };
  }
  return environment;
}

}  // namespace sandboxtest
