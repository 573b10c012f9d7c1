// HttpUrl: what a reference means, seen from another URL (RFC 3986 section 5.2).
#include <cstring>
#include <utility>

#include "transport/http_url.h"

namespace kest {
namespace {

bool IsSegment(const char* segment, std::uint32_t length, const char* text) {
  return length == std::strlen(text) && std::memcmp(segment, text, length) == 0;
}

// RFC 3986 section 5.2.4, for a path that begins with "/". The result is never longer, and every character is looked at
// a fixed number of times: one that a ".." takes away is gone.
String RemoveDotSegments(const String& path) {
  const std::uint32_t length = path.Length();
  const char* from = path.Characters();
  String result;
  char* to = result.TakeBuffer(length);
  std::uint32_t written = 0;
  for (std::uint32_t begin = 0; begin < length;) {
    const void* slash = std::memchr(from + begin + 1, '/', length - begin - 1);
    const auto end = slash != nullptr ? static_cast<std::uint32_t>(static_cast<const char*>(slash) - from) : length;
    const char* segment = from + begin + 1;
    const std::uint32_t segmentLength = end - begin - 1;
    const bool isParent = IsSegment(segment, segmentLength, "..");
    if (isParent || IsSegment(segment, segmentLength, ".")) {
      while (isParent && written > 0 && to[--written] != '/') continue;
      if (end == length) to[written++] = '/';
    } else {
      std::memcpy(to + written, from + begin, end - begin);
      written += end - begin;
    }
    begin = end;
  }
  result.ReturnBuffer();
  result.SetAt(written, '\0');
  return result;
}

// Path and parameters in one, as references see them: parameters are part of the last segment.
String WholePath(const HttpUrl& url) {
  String whole = url.path;
  whole.Append(url.parameters);
  return whole;
}

// RFC 3986 section 5.2.3: all of the base but its last segment, then the reference.
String MergePaths(const String& base, const String& reference) {
  String merged = base.Middle(0, HttpUrl::LastSegmentOf(base));
  merged.Append(reference);
  return merged;
}

String Rooted(String path) {
  if (path.IsEmpty() || path.At(0) != '/') path.Insert("/", 0, 1);
  return path;
}

}  // namespace

void HttpUrl::Merge(const HttpUrl& reference) {
  HttpUrl target = reference;
  String whole = WholePath(reference);
  if (reference.scheme.IsEmpty()) target.scheme = scheme;
  if (reference.scheme.IsEmpty() && reference.host.IsEmpty()) {
    target.user = user;
    target.password = password;
    target.host = host;
    target.port = port;
    if (whole.IsEmpty()) {
      whole = WholePath(*this);
      if (reference.query.IsEmpty()) target.query = query;
    } else if (whole.At(0) != '/') {
      whole = MergePaths(WholePath(*this), whole);
    }
  }
  target.SplitPath(RemoveDotSegments(Rooted(std::move(whole))));
  *this = std::move(target);
}

}  // namespace kest
