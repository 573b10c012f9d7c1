#include "transport/http_reply.h"

namespace kest {

String HttpReply::WriteHead() const {
  String head("HTTP/");
  head.Append(version);
  head.Append(' ');
  head.AppendUnsigned(status);
  head.Append(' ');
  head.Append(reason);
  AppendHeaderBlock(headers, head);
  return head;
}

}  // namespace kest
