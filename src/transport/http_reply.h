// The head of an HTTP reply, what its receiver decided about it, and what the receiver was asked to do. A plain value;
// one HttpReply belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "transport/http_header_list.h"

namespace kest {

struct HttpReply {
  String version;
  std::uint16_t status = 200;
  String reason = "OK";
  HttpHeaderList headers;
  std::int32_t contentLength = -1;  // bytes of the body; -1 where the head does not say
  bool keepAlive = false;           // the connection may carry another exchange
  bool handleStatus = true;         // the exchange acts on redirect and retry codes
  bool noReply = false;             // the exchange ends when the request is sent

  // Answers the status line and the header block with its empty line (RFC 1945 section 6). Throws Qor::MemoryException
  // when there is no memory.
  String WriteHead() const;
};

}  // namespace kest
