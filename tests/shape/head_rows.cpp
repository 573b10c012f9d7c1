// Status lines and header blocks.
#include "shape/reply_rows.h"

namespace kest::testing {
namespace {

using namespace std::string_literals;

constexpr char afterStatus[] = "Content-Length: {length}\r\n\r\n{body}";

RowText Status(const char* name, const std::string& line, const char* seen) {
  return {name, {line + "\r\n" + afterStatus}, seen};
}

RowText Header(const char* name, const std::string& lines, const char* seen) {
  return {name, {"HTTP/1.0 200 OK\r\n" + lines + afterStatus}, seen};
}

RowText Lines(const char* name, const std::string& lines, const char* seen) {
  return {name, {"HTTP/1.0 200 OK\r\n" + lines + "{body}"}, seen};
}

std::string ManyFields() {
  std::string lines;
  for (int i = 0; i < 40; ++i) lines += "N" + std::to_string(i) + ":v\r\n";
  return lines;
}

}  // namespace

const std::vector<RowText>& HeadRows() {
  static const std::vector<RowText> rows = {
      {"Honest", {"{reply}"}, good},
      {"NothingAtAll", {""}, failed},
      Status("NoReason", "HTTP/1.0 200", good),
      Status("LongReason", "HTTP/1.0 200 " + std::string(300, 'r'), good),
      Status("LaterVersion", "HTTP/9.9 200 OK", good),
      Status("ProtocolWithoutSlash", "ICY 200 OK", good),
      Status("TabsAndFormFeeds", "HTTP/1.0\t\f200\fOK", good),
      Status("SpacesInFront", "  HTTP/1.0   200  OK", good),
      Status("StatusWithLeadingZero", "HTTP/1.0 0200 OK", good),
      Status("StatusBeyondSixteenBits", "HTTP/1.0 65736 OK", good),
      Status("StatusLineEndsWithTwoReturns", "HTTP/1.0 200 OK\r", good),
      Status("StatusWithLetter", "HTTP/1.0 200x OK", failed),
      Status("ReturnInStatusLine", "HTTP/1.0 200\rOK", failed),
      Status("NoStatus", "HTTP/1.0", failed),
      Status("StatusAlone", "200", failed),
      Status("EmptyStatusLine", "", failed),
      Status("Created", "HTTP/1.0 201 Created", failed),
      Status("NoContent", "HTTP/1.0 204 No Content", failed),
      Status("NotModified", "HTTP/1.0 304 Not Modified", failed),
      Status("Unauthorized", "HTTP/1.0 401 Unauthorized\r\nWWW-Authenticate: Basic", failed),
      Status("ProxyUnauthorized", "HTTP/1.0 407 Proxy Authentication Required", failed),
      Status("NotFound", "HTTP/1.0 404 Not Found", failed),
      Status("ServerError", "HTTP/1.0 500 Error", failed),
      {"ContinueFirst", {"HTTP/1.1 100 Continue\r\n\r\n{reply}"}, failed},
      {"StatusLineAlone", {"HTTP/1.0 200 OK\r\n"}, failed},
      {"NoHeaderFields", {"HTTP/1.0 200 OK\r\n\r\n{body}"}, failed},
      {"OtherProtocol", {"\x15\x03\x01\x00\x02\x02\x46"s}, failed},

      {"BareLineFeeds", {"HTTP/1.0 200 OK\nContent-Length: {length}\n\n{body}"}, good},
      Lines("NoSpaceBehindColon", "Content-Length:{length}\r\n\r\n", good),
      Lines("WhiteSpaceAroundColon", "Content-Length \t:\t  {length} \t\r\n\r\n", good),
      Lines("OtherLetterCase", "cONTENT-lENGTH: {length}\r\n\r\n", good),
      Lines("LinesEndWithTwoReturns", "Content-Length: {length}\r\r\n\r\r\n", good),
      Lines("LengthOnFoldedLine", "Content-Length:\r\n {length}\r\n\r\n", good),
      Lines("LengthOnLineFoldedByTab", "Content-Length:\n\t{length}\r\n\r\n", good),
      Header("FoldedThrice", "Note: a\r\n b\r\n\tc: d\r\n   e\r\n", good),
      Header("FoldOfNothing", "Note: a\r\n \r\n", good),
      Header("SpaceBeforeFirstField", " Note: a\r\n", good),
      Header("EmptyValue", "Note:\r\n", good),
      Header("EmptyName", ": a\r\n", good),
      Header("ColonAlone", ":\r\n", good),
      Header("NoColon", "nonsense\r\n", good),
      Header("FurtherColons", "Note: http://a:80/:\r\n", good),
      Header("HighBytes", "N\xC3\xB6te: \xFF\x80\x01\r\n", good),
      Header("ManyFields", ManyFields(), good),
      Header("HugeLine", "Note: " + std::string(9000, 'x') + "\r\n", good),
      Header("HugeName", std::string(9000, 'x') + ": a\r\n", good),
      Header("ReturnInLine", "Note: a\rb\r\n", failed),
      Header("ReturnBeforeFold", "Note: a\r b\r\n", failed),
      Header("EmptyLineFirst", "\r\n", failed),
      // A zero byte is read as the end of a text: the block ends, what follows is the body.
      Lines("ZeroByteEndsTheBlock", "Content-Length: {length}\r\nNote: a\0"s, good),
      Lines("BlockWithoutEmptyLine", "Content-Length: {length}\r\n", failed),
  };
  return rows;
}

}  // namespace kest::testing
