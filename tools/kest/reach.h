// Asks whether somebody takes connections at an address, to tell a server that is not there from a key that is not its
// own: to the library both are a failed exchange.
#pragma once

#include <cstdint>
#include <string>

namespace kest_host {

// Looks the name up and connects to one address after the other, about 5 seconds each; says nothing and closes.
// Only addresses of IPv4, which are the library's.
bool CanConnect(const std::string& host, std::uint16_t port);

}  // namespace kest_host
