// The commands of the program. Each throws std::runtime_error with words for its user, who sees them on stderr.
#pragma once

#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string>

#include "commerce_server.h"
#include "http_server.h"

namespace sandbox {

/// Tells that an option has a value that it can never have.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

struct InitOptions {
  std::string folder;
  unsigned bits = 1024;
};

/// Makes the folder's key pair and sample catalogue and says on stdout what to do next. Overwrites nothing.
void Init(const InitOptions& options);

struct ServeOptions {
  std::string folder;
  std::string listen = "127.0.0.1:0";
  std::string admin;   // address and port of the admin port; empty: there is none
  std::string faults;  // file of faults; empty: none are asked for at the start
  std::optional<std::uint64_t> seed;  // of what the server draws; nothing: from the system's generator
  std::string clock;                  // when sales and requests are dated, as ISO 8601 in UTC; empty: now
  SessionLimits sessions;
  HttpLimits http;
  bool verbose = false;
};

/// Serves the folder, having told of its readiness in one line of JSON on stdout, until SIGTERM or SIGINT. Throws
/// UsageError when an address is no numeric address with a port, or the clock no time.
void Serve(const ServeOptions& options);

}  // namespace sandbox
