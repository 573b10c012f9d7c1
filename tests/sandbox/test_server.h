// The sandbox inside the test's own process, on a free port and a thread of its own: with a clock that the test turns,
// a catalogue of the test's, and a log that the test reads.
#pragma once

#include <atomic>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

#include "admin_routes.h"
#include "catalogue.h"
#include "commerce_server.h"
#include "http_server.h"
#include "key_pair.h"
#include "operations.h"
#include "sandbox/process.h"

namespace sandboxtest {

extern const char* const testCatalogue;
constexpr const char* testGuid = "{11111111-2222-3333-4444-555555555555}";

/// Returns a catalogue whose one application, testGuid, makes a product list of 6 MB: more than the system takes into
/// its buffers for a client that does not read.
std::string LargeCatalogue();

/// Returns the key pair of that many bits that all tests of this process share; making one takes a while.
const sandbox::KeyPair& SharedKey(unsigned bits = 1024);

struct TestServerOptions {
  unsigned bits = 1024;
  std::string catalogue = testCatalogue;
  sandbox::SessionLimits sessions;
  sandbox::HttpLimits http;
  bool randomFails = false;
  std::function<void()> duringHandshake;  // called on the server's thread while it makes a session; empty: nothing
  std::string faults;  // JSON as --faults takes it; empty: none
};

class TestServer {
 public:
  explicit TestServer(const TestServerOptions& options = {});
  ~TestServer();

  std::uint16_t Port() const { return port; }
  std::uint16_t AdminPort() const { return adminPort; }
  std::string KeyText() const { return key.PublicText(); }

  /// Returns the path of the database of sales.
  std::string SalesFile() const { return folder / "sales.db"; }

  /// Turns the clock of the sessions on.
  void PassSeconds(int seconds) { elapsed += seconds; }

  /// Stops the server, waits for its last reply and returns its log.
  std::string StopAndReadLog();

  sandbox::HttpServer& Server() { return server; }

 private:
  sandbox::Environment MakeEnvironment(const TestServerOptions& options);

  std::atomic<int> elapsed{0};
  const sandbox::KeyPair& key;
  const sandbox::Catalogue catalogue;
  TemporaryFolder folder;
  sandbox::Ledger ledger;
  const sandbox::Operations operations;
  sandbox::CommerceServer commerce;
  std::ostringstream log;
  sandbox::FaultTable faults;
  sandbox::RequestLog requests;
  sandbox::AdminRoutes routes;
  sandbox::HttpServer server;
  std::uint16_t port;
  std::uint16_t adminPort;
  std::thread thread;
};

}  // namespace sandboxtest
