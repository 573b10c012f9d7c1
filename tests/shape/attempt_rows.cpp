// Replies that ask for another attempt.
#include "shape/reply_rows.h"

namespace kest::testing {
namespace {

using Target = std::optional<std::string>;

constexpr char start[] = "10.0.0.1:8080 /GetProductList";
constexpr char proxied[] = "10.1.1.1:3128 http://shop.example:8080/GetProductList";

// A head that is acted on as soon as its last field has come, and then whatever ends it.
std::string Head(const std::string& line, const std::string& field) {
  return line + "\r\n" + field + "{closed}\r\n\r\n{reset}";
}

std::string Redirect(const std::string& location) {
  return Head("HTTP/1.0 302 Found", "Location: {location}" + location);
}

std::string Timeout() {
  return "HTTP/1.0 408 Request Timeout\r\nX{closed}: y\r\n\r\n{reset}";
}
std::string LengthRequired() {
  return "HTTP/1.0 411 Length Required\r\nX{closed}: y\r\n\r\n{reset}";
}

std::vector<std::string> Repeated(int count, const std::string& text, std::vector<std::string> last = {}) {
  std::vector<std::string> all(static_cast<std::size_t>(count), text);
  all.insert(all.end(), last.begin(), last.end());
  return all;
}

std::vector<std::string> Attempts(int further, const std::string& target) {
  std::vector<std::string> all = Repeated(further, target);
  all.insert(all.begin(), start);
  return all;
}

// Cut, an absolute path is a shorter one.
Target FollowedPath(const std::string& location) {
  return "10.0.0.1:8080 " + location;
}

// Of "http://10.5.5.5:99/x": a word without a colon is a relative path; an address that is not whole leads nowhere.
Target FollowedUrl(const std::string& location) {
  const std::string address = "http://10.5.5.5";
  if (location.find(':') == std::string::npos) return "10.0.0.1:8080 /" + location;
  if (location.size() < address.size()) return std::nullopt;
  const std::string rest = location.substr(address.size());
  if (rest.size() < 2) return "10.5.5.5:80 /";
  return rest == ":9" ? "10.5.5.5:9 /" : "10.5.5.5:99 /";
}

// Of "http://10.6.6.6:3128": what names no host is no proxy.
Target UsedProxy(const std::string& location) {
  const std::string address = "http://10.6.6.6";
  if (location.size() < address.size()) return std::nullopt;
  const std::string rest = location.substr(address.size());
  const std::string port = rest.size() < 2 ? "80" : rest.substr(1);
  return "10.6.6.6:" + port + " http://shop.example:8080/GetProductList";
}

RowText Redirected(const char* name, const std::string& location, const std::string& target) {
  return {name, {Redirect(location), "{reply}"}, good, {start, target}};
}

RowText Followed(const char* name, const std::string& status) {
  const std::string stream = Head("HTTP/1.0 " + status, "Location: {location}/elsewhere");
  return {name, {stream, "{reply}"}, good, {start, "10.0.0.1:8080 /elsewhere"}, FollowedPath};
}

RowText Standing(const char* name, const std::string& stream) {
  return {name, {stream, "{reply}"}, failed};
}

}  // namespace

const std::vector<RowText>& AttemptRows() {
  static const std::vector<RowText> rows = {
      Followed("MovedPermanently", "301 Moved Permanently"),
      Followed("Found", "302 Found"),
      Followed("SeeOther", "303 See Other"),
      {"RedirectToAnotherServer",
       {Redirect("http://10.5.5.5:99/x"), "{reply}"},
       good,
       {start, "10.5.5.5:99 /x"},
       FollowedUrl},
      Standing("RedirectWithoutLocation", "HTTP/1.0 302 Found\r\nX: y\r\n\r\n"),
      Standing("RedirectToEmptyLocation", "HTTP/1.0 302 Found\r\nLocation: \r\n\r\n"),
      Standing("TemporaryRedirect", "HTTP/1.0 307 Temporary\r\nLocation: /x\r\n\r\n"),
      Standing("MultipleChoices", "HTTP/1.0 300 Choices\r\nLocation: /x\r\n\r\n"),
      Standing("SwitchProxy", "HTTP/1.0 306 Switch Proxy\r\nLocation: http://10.6.6.6\r\n\r\n"),
      {"FiveRedirects", Repeated(5, Head("HTTP/1.0 302 Found", "Location: x"), {"{reply}"}), good,
       Attempts(5, "10.0.0.1:8080 /x")},
      {"SixRedirects", Repeated(6, Head("HTTP/1.0 302 Found", "Location: x"), {"{reply}"}), failed,
       Attempts(5, "10.0.0.1:8080 /x")},
      Redirected("RedirectToQuery", "?", "10.0.0.1:8080 /GetProductList?"),
      Redirected("RedirectToDot", ".", "10.0.0.1:8080 /"),
      {"RedirectWithBody",
       {"HTTP/1.0 302 Found\r\nContent-Length: 7\r\nLocation: {location}/elsewhere{closed}\r\n\r\n{reset}see it.",
        "{reply}"},
       good,
       {start, "10.0.0.1:8080 /elsewhere"},
       FollowedPath},
      {"UseProxy",
       {Head("HTTP/1.0 305 Use Proxy", "Location: {location}http://10.6.6.6:3128"), "{reply}"},
       good,
       {start, "10.6.6.6:3128 http://shop.example:8080/GetProductList"},
       UsedProxy},
      Standing("UseProxyWithoutLocation", "HTTP/1.0 305 Use Proxy\r\nX: y\r\n\r\n"),
      Standing("UseProxyWithoutHost", "HTTP/1.0 305 Use Proxy\r\nLocation: /x\r\n\r\n"),
      {"OneTimeout", {Timeout(), "{reply}"}, good, Attempts(1, start)},
      {"FiveTimeouts", Repeated(5, Timeout(), {"{reply}"}), good, Attempts(5, start)},
      {"SixTimeouts", Repeated(6, Timeout(), {"{reply}"}), failed, Attempts(5, start)},
      {"LengthRequiredOnce", {LengthRequired(), "{reply}"}, good, Attempts(1, start)},
      {"LengthRequiredEightTimes", Repeated(8, LengthRequired(), {"{reply}"}), good, Attempts(8, start)},
      // A proxy that keeps the connection: the next request goes out on it, behind the rest of the first reply.
      {"RedirectOnKeptConnection",
       {"HTTP/1.0 302 Found\r\nContent-Length: 3\r\nProxy-Connection: Keep-Alive\r\nLocation: x\r\n\r\nabc"
        "{next}{reply}"},
       good,
       {proxied, "same http://shop.example:8080/x"},
       nullptr,
       true},
      {"RedirectOnConnectionThatIsNotKept",
       {Head("HTTP/1.0 302 Found", "Proxy-Connection: close\r\nLocation: x"), "{reply}"},
       good,
       {proxied, "10.1.1.1:3128 http://shop.example:8080/x"},
       nullptr,
       true},
  };
  return rows;
}

}  // namespace kest::testing
