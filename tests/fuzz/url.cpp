// URLs and what references mean from them, as a redirect merges them: against RFC 3986 as it is written.
// The input is two lines: the URL that was asked for, and the "Location" of the answer.
#include <algorithm>

#include "fuzz/target.h"
#include "transport/http_url.h"

namespace kest::testing {
namespace {

bool BeginsWith(const std::string& text, const std::string& begin) {
  return text.compare(0, begin.size(), begin) == 0;
}

// RFC 3986 section 5.2.4, step by step.
std::string WithoutDotSegments(std::string input) {
  std::string output;
  while (!input.empty()) {
    if (BeginsWith(input, "/./")) {
      input.erase(0, 2);
    } else if (input == "/.") {
      input = "/";
    } else if (BeginsWith(input, "/../") || input == "/..") {
      input = "/" + input.substr(std::min<std::size_t>(4, input.size()));
      output.resize(output.find_last_of('/') != std::string::npos ? output.find_last_of('/') : 0);
    } else {
      const std::size_t end = std::min(input.find('/', 1), input.size());
      output += input.substr(0, end);
      input.erase(0, end);
    }
  }
  return output;
}

std::string WholePath(const HttpUrl& url) {
  return Plain(url.path) + Plain(url.parameters);
}

bool SameAuthority(const HttpUrl& a, const HttpUrl& b) {
  return a.user == b.user && a.password == b.password && a.host == b.host && a.port == b.port;
}

bool SameButFragment(const HttpUrl& a, const HttpUrl& b) {
  return a.scheme == b.scheme && SameAuthority(a, b) && a.path == b.path && a.parameters == b.parameters &&
         a.query == b.query;
}

bool Same(const HttpUrl& a, const HttpUrl& b) {
  return SameButFragment(a, b) && a.fragment == b.fragment;
}

HttpUrl Merged(HttpUrl base, const HttpUrl& reference) {
  base.Merge(reference);
  return base;
}

// RFC 3986 section 5.2.2. A URL without a path stands for the root's.
void HoldMerge(const HttpUrl& base, const HttpUrl& reference, const HttpUrl& target) {
  const bool isElsewhere = !reference.scheme.IsEmpty() || !reference.host.IsEmpty();
  HOLD(target.scheme == (reference.scheme.IsEmpty() ? base.scheme : reference.scheme));
  HOLD(SameAuthority(target, isElsewhere ? reference : base));
  HOLD(target.fragment == reference.fragment);

  std::string path = WholePath(reference);
  const bool isSamePath = !isElsewhere && path.empty();
  if (isSamePath) {
    path = WholePath(base);
  } else if (!isElsewhere && path[0] != '/') {
    const std::string basePath = WholePath(base);
    path = basePath.substr(0, basePath.find_last_of('/') + 1) + path;
  }
  if (!BeginsWith(path, "/")) path = "/" + path;
  HOLD(WholePath(target) == WithoutDotSegments(path));
  HOLD(target.query == (isSamePath && reference.query.IsEmpty() ? base.query : reference.query));
}

// What is written is what is read.
void HoldText(const HttpUrl& url) {
  String absolute, path;
  url.AppendAbsolute(absolute);
  url.AppendPathPart(path);
  HOLD(BeginsWith(Plain(path), "/"));
  HOLD(absolute.Length() >= path.Length());
  HOLD(Plain(absolute.Middle(absolute.Length() - path.Length(), path.Length())) == Plain(path));
  if (!url.scheme.IsEmpty()) HOLD(Same(HttpUrl::Parse(absolute), url));
}

void Check(Input input) {
  const std::string baseText = input.Line(), referenceText = input.Line();
  // A header's value has no zero byte.
  if ((baseText + referenceText).find('\0') != std::string::npos) return;
  const HttpUrl base = HttpUrl::Parse(Kest(baseText)), reference = HttpUrl::Parse(Kest(referenceText));
  const HttpUrl target = Merged(base, reference);
  HoldMerge(base, reference, target);
  HoldText(target);
  // What is merged already is what it is, seen from wherever.
  HOLD(Same(Merged(target, target), target));
  HOLD(SameButFragment(Merged(target, HttpUrl::Parse("")), target));
  if (!target.scheme.IsEmpty()) HOLD(Same(Merged(base, target), target));
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
