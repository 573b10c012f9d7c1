#include "transport/http_url.h"

#include <cstring>

namespace kest {
namespace {

bool IsLetter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}

bool IsSchemeCharacter(char c) {
  return IsLetter(c) || (c >= '0' && c <= '9') || c == '+' || c == '-' || c == '.';
}

// What is left of a text that is taken apart from its front.
struct Remainder {
  const char* next;
  std::uint32_t length;

  // The characters up to the first one of `set`, or all.
  std::uint32_t SpanUntil(const char* set) const {
    std::uint32_t span = 0;
    while (span < length && std::strchr(set, next[span]) == nullptr) ++span;
    return span;
  }
  bool BeginsWith(char character) const { return length > 0 && *next == character; }
  String Take(std::uint32_t count) {
    if (count == 0) return String();
    String taken(next, count);
    Skip(count);
    return taken;
  }
  void Skip(std::uint32_t count) {
    next += count;
    length -= count;
  }
};

// RFC 3986 section 3.1.
String TakeScheme(Remainder& rest) {
  std::uint32_t span = 0;
  while (span < rest.length && IsSchemeCharacter(rest.next[span])) ++span;
  if (span == 0 || span == rest.length || rest.next[span] != ':' || !IsLetter(*rest.next)) return String();
  String scheme = rest.Take(span);
  rest.Skip(1);
  return scheme;
}

// RFC 3986 section 3.2. A user ends at the last "@", so that one inside it does no harm; a port begins behind the
// brackets of an IPv6 address.
void SplitAuthority(const String& authority, HttpUrl& url) {
  const auto length = static_cast<std::int32_t>(authority.Length());
  const std::int32_t at = authority.ReverseFind('@', length - 1);
  if (at >= 0) {
    const std::int32_t colon = authority.Find(':');
    const std::int32_t userEnd = colon >= 0 && colon < at ? colon : at;
    url.user = authority.Middle(0, static_cast<std::uint32_t>(userEnd));
    if (userEnd < at) {
      url.password =
          authority.Middle(static_cast<std::uint32_t>(userEnd + 1), static_cast<std::uint32_t>(at - userEnd - 1));
    }
  }
  const std::int32_t bracket = authority.ReverseFind(']', length - 1);
  const std::int32_t portColon = authority.Find(':', bracket > at ? bracket : at + 1);
  const std::int32_t hostEnd = portColon >= 0 ? portColon : length;
  url.host = authority.Middle(static_cast<std::uint32_t>(at + 1), static_cast<std::uint32_t>(hostEnd - at - 1));
  if (portColon >= 0) {
    const String port = authority.Middle(static_cast<std::uint32_t>(portColon + 1), authority.Length());
    url.port = static_cast<std::uint16_t>(port.ToUnsigned());
  }
}

}  // namespace

HttpUrl HttpUrl::Parse(const String& text) {
  HttpUrl url;
  Remainder rest{text.Text(), text.Length()};
  url.scheme = TakeScheme(rest);
  if (rest.length >= 2 && rest.next[0] == '/' && rest.next[1] == '/') {
    rest.Skip(2);
    SplitAuthority(rest.Take(rest.SpanUntil("/?#")), url);
  }
  url.SplitPath(rest.Take(rest.SpanUntil("?#")));
  if (rest.BeginsWith('?')) url.query = rest.Take(rest.SpanUntil("#"));
  url.fragment = rest.Take(rest.length);
  return url;
}

std::uint32_t HttpUrl::LastSegmentOf(const String& whole) {
  std::uint32_t begin = whole.Length();
  while (begin > 0 && whole.At(begin - 1) != '/') --begin;
  return begin;
}

void HttpUrl::SplitPath(const String& whole) {
  std::uint32_t semicolon = LastSegmentOf(whole);
  while (semicolon < whole.Length() && whole.At(semicolon) != ';') ++semicolon;
  path = whole.Middle(0, semicolon);
  parameters = whole.Middle(semicolon, whole.Length());
}

void HttpUrl::AppendPathPart(String& text) const {
  if (path.IsEmpty()) {
    text.Append('/');
  } else {
    text.Append(path);
  }
  text.Append(parameters);
  text.Append(query);
  text.Append(fragment);
}

void HttpUrl::AppendAbsolute(String& text) const {
  if (!scheme.IsEmpty()) {
    text.Append(scheme);
    text.Append("://");
  }
  text.Append(user);
  if (!password.IsEmpty()) {
    text.Append(':');
    text.Append(password);
  }
  if (!user.IsEmpty() || !password.IsEmpty()) text.Append('@');
  text.Append(host);
  if (port != 0) {
    text.Append(':');
    text.AppendUnsigned(port);
  }
  AppendPathPart(text);
}

}  // namespace kest
