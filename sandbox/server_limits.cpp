#include "server_limits.h"

#include "admin_sales.h"
#include "commerce_server.h"
#include "fault.h"
#include "http_server.h"
#include "request_log.h"

namespace sandbox {
namespace {

std::string Bytes(std::size_t count) {
  return std::to_string(count) + " bytes";
}

std::string Seconds(std::chrono::milliseconds time) {
  return std::to_string(time.count() / 1000) + " s";
}

}  // namespace

std::vector<LimitRow> Limits() {
  const HttpLimits http;
  const SessionLimits sessions;
  return {
      {"connections at the same time", std::to_string(http.maxConnections), "they wait to be accepted until one ends"},
      {"file descriptors that are not for connections", std::to_string(sparedDescriptors),
       "fewer connections are served, and the log tells how many"},
      {"time for a request to arrive whole", Seconds(http.clientTime), "408"},
      {"time for a reply to be taken", Seconds(http.clientTime), "the connection is closed"},
      {"time to read on behind a reply", Seconds(drainTime), "the connection is closed"},
      {"request line and header fields", Bytes(http.maxHead), "431"},
      {"body", Bytes(http.maxBody), "413"},
      {"bodies above " + Bytes(smallBody) + " that are open together",
       std::to_string(bodiesAtOnce) + " times --max-body", "503"},
      {"replies above " + Bytes(smallBody) + " that wait to be taken", Bytes(http.maxReplies),
       "503 for all but handshakes"},
      {"handshake without its base64", Bytes(longestHandshake), "413"},
      {"path of a handshake", Bytes(longestServicePath), "400"},
      {"fields of a sealed message", std::to_string(mostFields), "422"},
      {"lines of an order", std::to_string(mostOrderLines), "KEST-Error 1203"},
      {"pairs of name and value in a line of an order", std::to_string(mostPairs), "KEST-Error 1203"},
      {"sessions", std::to_string(sessions.most), "503"},
      {"life of a session", Seconds(sessions.lifetime), "410"},
      {"wait for another program that holds `sales.db`", Seconds(std::chrono::milliseconds(lockMilliseconds)),
       "KEST-Error 1501"},
      {"faults that wait", std::to_string(mostFaults) + ", of " + Bytes(mostFaultBytes) + " of JSON",
       "400 of the admin port"},
      {"requests that are remembered", std::to_string(RequestLog::most) + ", of " + Bytes(RequestLog::mostBytes),
       "the oldest are forgotten"},
      {"sales that the admin port tells, and declined cards", std::to_string(mostSalesTold) + " of each",
       "the newest are told"},
      {"lines that it tells of a sale", std::to_string(mostSaleLinesTold), "the first are told, and their number"},
      {"connections to the admin port", std::to_string(mostAdminConnections),
       "they wait to be accepted until one ends"},
      {"head of an admin request", Bytes(longestAdminHead), "431"},
      {"body of an admin request", Bytes(longestAdminBody), "413"},
      {"time of an admin request, and again of its reply", Seconds(adminTime), "the connection is closed"},
      {"memory of the process", std::to_string(mostMemory) + " MB", "the limits above keep it below"},
  };
}

}  // namespace sandbox
