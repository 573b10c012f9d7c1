// Checks the head of a request against what a client owes, byte for byte. It reads no socket and knows nothing of the
// sealed body. No state: any thread may call.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace sandbox {

struct RequestHead {
  std::string path;           // begins with "/"
  std::string connectionId;   // of "KEST-Auth-CID"; empty in a handshake
  std::size_t contentLength;  // bytes
};

/// Reads a head, from the request line to the empty line that ends it. Throws Refused with the first fault.
///
/// A client writes HTTP/1.0, "Accept: */*", "Host", "Content-Length", "Proxy-Connection: Keep-Alive" and, in a request,
/// "KEST-Auth-CID", in this order and letter case, and nothing else; the target may be an absolute URL. A proxy
/// announces itself by "Via" (RFC 9110 section 7.6.3). Behind one the version may be HTTP/1.1, names are compared
/// without regard to letter case, "Proxy-Connection" may be gone, "Host" may have a port, order is free and other
/// fields are let pass.
RequestHead CheckHead(std::string_view head);

}  // namespace sandbox
