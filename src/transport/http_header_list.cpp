#include "transport/http_header_list.h"

namespace kest {

void AppendHeaderBlock(const HttpHeaderList& headers, String& head) {
  head.Reserve(head.Length() + HeaderLinesLength(headers) + 4);
  head.Append("\r\n");
  AppendHeaderLines(headers, head);
  head.Append("\r\n");
}

}  // namespace kest
