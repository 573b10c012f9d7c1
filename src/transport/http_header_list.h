// The header fields of an HTTP message, in the order in which they were added or received, and the field names and
// connection tokens that the library knows. Names are found whatever their letter case and keep the one they came in.
#pragma once

#include "core/name_value_list.h"

namespace kest {

using HttpHeaderList = NameValueList;

// Ends the first line of a head and appends the header lines and the empty line behind them. Throws
// Qor::MemoryException when there is no memory.
void AppendHeaderBlock(const HttpHeaderList& headers, String& head);

namespace header {

constexpr char accept[] = "Accept";
constexpr char cacheControl[] = "Cache-Control";
constexpr char connection[] = "Connection";
constexpr char contentLength[] = "Content-Length";
constexpr char contentType[] = "Content-Type";
constexpr char date[] = "Date";
constexpr char host[] = "Host";
constexpr char ifModifiedSince[] = "If-Modified-Since";
constexpr char location[] = "Location";
constexpr char pragma[] = "Pragma";
constexpr char proxyConnection[] = "Proxy-Connection";
constexpr char userAgent[] = "User-Agent";
constexpr char via[] = "Via";

// In the order of the table above. None of them has a default value: a message carries the fields that were added to
// it.
constexpr const char* known[] = {accept,          cacheControl, connection, contentLength,   contentType, date, host,
                                 ifModifiedSince, location,     pragma,     proxyConnection, userAgent,   via};

constexpr char closeToken[] = "Close";
constexpr char keepAliveToken[] = "Keep-Alive";

}  // namespace header
}  // namespace kest
