#include "admin_routes.h"

#include <algorithm>
#include <boost/asio/ip/address.hpp>
#include <charconv>
#include <exception>
#include <nlohmann/json.hpp>

#include "admin_sales.h"
#include "dashboard_files.h"
#include "fields.h"
#include "json_text.h"
#include "masking.h"

namespace sandbox {
namespace {

using Json = nlohmann::ordered_json;

// Leaves the answering of a request with what is wrong about it.
class AdminRefused : public std::runtime_error {
 public:
  AdminRefused(int itsStatus, const std::string& words) : std::runtime_error(words), status(itsStatus) {}

  const int status;
};

bool IsPort(std::string_view digits) {
  std::uint16_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  return error == std::errc() && end == digits.data() + digits.size();
}

// A page of another site can be given any name that leads to this address, so the name that was called must be one of
// the machine itself.
bool IsLoopback(std::string_view host) {
  const bool bracketed = !host.empty() && host.front() == '[';
  const std::size_t colon = bracketed ? host.find(':', host.find(']')) : host.find(':');
  if (colon != std::string_view::npos && !IsPort(host.substr(colon + 1))) return false;
  host = host.substr(0, colon);
  if (EqualIgnoringCase(host, "localhost")) return true;
  if (bracketed && host.size() > 2 && host.back() == ']') host = host.substr(1, host.size() - 2);
  boost::system::error_code error;
  const auto address = boost::asio::ip::make_address(std::string(host), error);
  return !error && address.is_loopback() && address.is_v6() == bracketed;
}

void CheckSite(const AdminRequest& request) {
  if (request.repeats) throw AdminRefused(400, "Host, Origin and Content-Type may stand once each");
  if (!IsLoopback(request.host)) throw AdminRefused(403, "Host must be a loopback address or localhost");
  if (!request.origin.empty() && request.origin != "http://" + request.host) {
    throw AdminRefused(403, "the request comes from the page of another site");
  }
}

constexpr std::string_view filesFolder = "/dashboard/";

// Finds the file of the dashboard that the path stands for; null when it stands for none.
const DashboardFile* FileAt(std::string_view path) {
  if (path == "/") return FindDashboardFile(dashboardPage);
  const bool inFolder = path.substr(0, filesFolder.size()) == filesFolder;
  return inFolder ? FindDashboardFile(path.substr(filesFolder.size())) : nullptr;
}

const AdminRouteRow& FindRoute(std::string_view path) {
  const bool isFile = path != "/" && FileAt(path);
  const std::string_view wanted = isFile ? filesFolder : path;
  const auto end = adminRoutes + adminRouteCount;
  const auto found = std::find_if(adminRoutes, end, [&](const AdminRouteRow& row) { return row.path == wanted; });
  if (found == end || (wanted == filesFolder && !isFile)) throw AdminRefused(404, "there is no such path");
  return *found;
}

void CheckContentType(std::string_view value) {
  value = value.substr(0, value.find_first_of("; "));
  if (!EqualIgnoringCase(value, "application/json")) throw AdminRefused(415, "Content-Type must be application/json");
}

std::uint64_t ReadSince(std::string_view query) {
  constexpr std::string_view name = "since=";
  std::uint64_t number = 0;
  if (query.empty()) return number;
  const std::string_view digits = query.substr(0, name.size()) == name ? query.substr(name.size()) : "";
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  const bool whole = error == std::errc() && end == digits.data() + digits.size() && !digits.empty();
  if (!whole) throw AdminRefused(400, "the query must be since= and the number of a request");
  return number;
}

// A fault may hold whatever its sender put there, as a request may.
Json ShownJson(const Json& json) {
  if (json.is_string()) return ShownText(json.get<std::string>());
  if (!json.is_structured()) return json;
  Json shown = json;
  for (Json& inner : shown) inner = ShownJson(inner);
  return shown;
}

Json FaultJson(const Fault& fault) {
  Json json = ShownJson(Json::parse(fault.asked));
  if (fault.kind == FaultKind::Field && fault.value) json["value"] = ShownField({fault.name, *fault.value}).value;
  fault.left ? json["left"] = *fault.left : json["left"] = "always";
  return json;
}

Json FieldsJson(const FieldList& fields) {
  Json list = Json::array();
  for (const Field& field : fields) list.push_back(Json::array({field.name, field.value}));
  return list;
}

Json RequestJson(const RequestRecord& record) {
  Json json;
  json["number"] = record.number;
  json["time"] = record.time;
  json["peer"] = record.peer;
  json["path"] = record.path;
  json["kind"] = record.kind;
  json["status"] = record.status;
  if (!record.refusal.empty()) json["refusal"] = record.refusal;
  json["faults"] = record.faults;
  json["request"] = FieldsJson(record.request);
  json["reply"] = FieldsJson(record.reply);
  return json;
}

}  // namespace

const AdminRouteRow adminRoutes[] = {
    {"GET", "/", "the dashboard, a page for a browser"},
    {"GET", "/dashboard/", "its other files"},
    {"GET", "/health", "`{\"status\": \"ok\"}`"},
    {"GET", "/state", "what is open and counted, and the faults that wait"},
    {"GET", "/requests", "the last 1000 requests, the oldest first; `?since=N` leaves out those up to number N"},
    {"GET", "/sales", "the last 50 sales with their first 20 lines, and the last 50 declined cards, the newest first"},
    {"POST", "/faults", "adds the faults of its body behind those that wait"},
    {"POST", "/faults/clear", "forgets the faults of one kind, such as `{\"kind\": \"delay\"}`"},
    {"POST", "/reset", "forgets faults, requests and sales; sessions stay open"},
};

const std::size_t adminRouteCount = std::size(adminRoutes);

AdminReply AdminError(int status, std::string_view words) {
  return {status, "", JsonText({{"error", words}})};
}

AdminReply AdminRoutes::Answer(const AdminRequest& request) {
  try {
    CheckSite(request);
    const std::string_view target = request.target;
    const std::size_t mark = target.find('?');
    const std::string_view path = target.substr(0, mark);
    const std::string_view query = mark == std::string_view::npos ? "" : target.substr(mark + 1);
    const AdminRouteRow& route = FindRoute(path);
    if (request.method != route.method) {
      AdminReply reply = AdminError(405, std::string("this path takes ") + route.method);
      reply.allow = route.method;
      return reply;
    }
    if (request.method == "POST") CheckContentType(request.contentType);
    if (const DashboardFile* file = FileAt(path)) return {200, "", std::string(file->text), MediaType(*file)};
    return {200, "", Serve(request, path, query)};
  } catch (const AdminRefused& refused) {
    return AdminError(refused.status, refused.what());
  } catch (const FaultError& error) {
    return AdminError(400, error.what());
  } catch (const std::exception& error) {
    return AdminError(500, error.what());
  }
}

std::string AdminRoutes::Serve(const AdminRequest& request, std::string_view path, std::string_view query) {
  if (path == "/requests") return Requests(query);
  if (!query.empty()) throw AdminRefused(400, "this path takes no query");
  if (path == "/state") return State();
  if (path == "/sales") return SalesJson(sources.ledger);
  if (path == "/faults") return AddFaults(request.body);
  if (path == "/faults/clear") return ClearFaults(request.body);
  if (path == "/reset") return Reset();
  return JsonText({{"status", "ok"}});
}

std::string AdminRoutes::State() {
  const LedgerCounts counts = sources.ledger.Counts();
  Json json;
  json["sessions"] = sources.server.Sessions();
  json["requests"] = sources.requests.Count();
  json["refused"] = sources.requests.Refused();
  json["sales"] = counts.sales;
  json["refusals"] = counts.refusals;
  json["bills"] = counts.bills;
  json["faults"] = Json::array();
  for (const Fault& fault : sources.faults.Waiting()) json["faults"].push_back(FaultJson(fault));
  return JsonText(json);
}

std::string AdminRoutes::Requests(std::string_view query) {
  const std::uint64_t since = ReadSince(query);
  Json list = Json::array();
  for (const RequestRecord& record : sources.requests.Requests()) {
    if (record.number > since) list.push_back(RequestJson(record));
  }
  return JsonText({{"requests", std::move(list)}});
}

std::string AdminRoutes::AddFaults(const std::string& body) {
  sources.faults.Append(ReadFaults(body));
  return JsonText({{"faults", sources.faults.Waiting().size()}});
}

std::string AdminRoutes::ClearFaults(const std::string& body) {
  sources.faults.Clear(ReadFaultKind(body));
  return JsonText({{"faults", sources.faults.Waiting().size()}});
}

std::string AdminRoutes::Reset() {
  sources.ledger.Reset();
  sources.faults.Clear();
  sources.requests.Clear();
  return JsonText({{"status", "ok"}});
}

}  // namespace sandbox
