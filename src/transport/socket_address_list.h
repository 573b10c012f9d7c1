// IPv4 socket addresses, and the list of them that stands for a host.
#pragma once

#include <cstdint>

#include "core/object.h"
#include "core/object_array.h"
#include "os/os.h"

namespace kest {

// One address. `value` is what connect takes: family AF_INET, port and address in network byte order.
class SocketAddress : public Object {
 public:
  SocketAddress() = default;
  // `address` in network byte order; the port is 0.
  explicit SocketAddress(std::uint32_t address) { value.address = address; }

  os::SocketAddress value = {os::addressFamilyInet, 0, 0, {}};
};

// Grows in steps of 32 addresses.
using SocketAddressList = ObjectArray<SocketAddress>;

// Answers the addresses of `host` in the resolver's order, at most 65,535 of them, with port 0. A null or empty name
// has none and is not looked up. A name that begins with a decimal digit is a dotted address and never looked up
// either: the list then holds what inet_addr makes of it, 255.255.255.255 where it is none, so that the failure shows
// at connect. Throws Qor::MemoryException when there is no memory.
SocketAddressList ResolveHost(const char* host);

}  // namespace kest
