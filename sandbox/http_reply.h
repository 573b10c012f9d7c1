// The bytes of an HTTP reply, exactly as they go out, with what a fault does to them. No state: any thread may call.
#pragma once

#include <string>

#include "fault.h"

namespace sandbox {

struct HttpReply {
  int status = 200;
  std::string reason;  // of the status line
  std::string fields;  // further header lines, each with its end
  std::string body;
};

struct ReplyBytes {
  std::string head;  // with the empty line that ends it
  std::string body;
};

/// Writes an HTTP/1.0 reply: status line, further fields, "Content-Type: text/plain", "Content-Length", the body. The
/// fault may be null; those that lie within the body already are left alone.
ReplyBytes WriteReply(HttpReply reply, const Fault* fault);

}  // namespace sandbox
