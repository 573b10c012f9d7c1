// A URL in its parts (RFC 3986), as the transport uses it: where to connect, and what to ask for there. A plain value;
// one HttpUrl belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/string.h"

namespace kest {

struct HttpUrl {
  std::uint16_t port = 0;  // 0: not given; connections then go to port 80
  String host;
  String password;
  String scheme = "http";
  String user;
  String path;  // begins with "/"; empty stands for "/"
  // What follows the path. Each holds its own leading character (";", "?", "#"), so that an empty part and an absent
  // one stay apart and are written back as they were read.
  String parameters;  // of the last path segment
  String query;
  String fragment;

  // Takes a URL or a relative reference apart (RFC 3986 section 4.1): parts that the text does not have are empty, the
  // scheme included. Nothing is validated; a port is the low 16 bits of what String::ToUnsigned makes of it. Throws
  // Qor::MemoryException when there is no memory.
  static HttpUrl Parse(const String& text);

  // Changes this URL into what `reference` means from here (RFC 3986 section 5.2, strictly): a reference without a host
  // keeps scheme, user, password, host and port, a relative path starts from this one. The path is free of dot segments
  // after that and begins with "/". Throws Qor::MemoryException when there is no memory.
  void Merge(const HttpUrl& reference);

  // The index behind the last "/" of a path, 0 where there is none.
  static std::uint32_t LastSegmentOf(const String& whole);

  // Splits a path into path and parameters: those begin at the first ";" of the last segment.
  void SplitPath(const String& whole);

  // Appends path, parameters, query and fragment. The fragment is deliberately among them.
  void AppendPathPart(String& text) const;

  // Appends the absolute form: scheme and "://" unless the scheme is empty, user, ":" and password if there is one, "@"
  // if there is either, host, ":" and port unless that is 0, and the path part.
  void AppendAbsolute(String& text) const;
};

}  // namespace kest
