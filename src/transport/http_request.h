// The head of an HTTP request. A plain value; one HttpRequest belongs to one thread at a time.
#pragma once

#include "core/string.h"
#include "transport/http_header_list.h"
#include "transport/http_url.h"

namespace kest {

struct HttpRequest {
  String method = "GET";
  HttpUrl url;
  HttpUrl proxy;           // without a host: none is used
  String version = "1.0";  // what follows "HTTP/"
  HttpHeaderList headers;

  bool UsesProxy() const { return !proxy.host.IsEmpty(); }

  // Answers the request line and the header block with its empty line (RFC 1945 section 5). The target is the URL's
  // path part, and with a proxy the URL's absolute form. Throws Qor::MemoryException when there is no memory.
  String WriteHead() const;
};

}  // namespace kest
