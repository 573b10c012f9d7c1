#include "transport/http_request.h"

namespace kest {

String HttpRequest::WriteHead() const {
  String head = method;
  head.Append(' ');
  if (UsesProxy()) {
    url.AppendAbsolute(head);
  } else {
    url.AppendPathPart(head);
  }
  head.Append(" HTTP/");
  head.Append(version);
  AppendHeaderBlock(headers, head);
  return head;
}

}  // namespace kest
