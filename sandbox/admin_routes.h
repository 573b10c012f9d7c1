// What the admin port offers: a request of its kind goes in, JSON or a file of the dashboard comes out. What it looks at
// is lent to it and must outlive it. One thread at a time may use it.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "commerce_server.h"
#include "fault_table.h"
#include "ledger.h"
#include "request_log.h"

namespace sandbox {

/// What the routes look at and change.
struct AdminSources {
  FaultTable& faults;
  RequestLog& requests;
  CommerceServer& server;
  Ledger& ledger;
};

struct AdminRequest {
  std::string method;
  std::string target;
  bool repeats;      // one of the three fields below stands more than once
  std::string host;  // the values of these header fields; empty when absent
  std::string origin;
  std::string contentType;
  std::string body;
};

struct AdminReply {
  int status = 200;
  std::string allow;  // the method that the path takes, when another one was used; else empty
  std::string body;   // JSON ends with a line end
  const char* contentType = "application/json";
};

struct AdminRouteRow {
  const char* method;
  const char* path;
  const char* meaning;
};

extern const AdminRouteRow adminRoutes[];
extern const std::size_t adminRouteCount;

/// Writes {"error": words}.
AdminReply AdminError(int status, std::string_view words);

class AdminRoutes {
 public:
  explicit AdminRoutes(AdminSources lent) : sources(lent) {}

  /// Answers a request. One that the page of another site may have sent is refused, whatever it asks for.
  AdminReply Answer(const AdminRequest& request);

 private:
  std::string Serve(const AdminRequest& request, std::string_view path, std::string_view query);
  std::string State();
  std::string Requests(std::string_view query);
  std::string AddFaults(const std::string& body);
  std::string ClearFaults(const std::string& body);
  std::string Reset();

  const AdminSources sources;
};

}  // namespace sandbox
