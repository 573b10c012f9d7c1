#include "transport/socket_address_list.h"

#include <cstring>

namespace kest {
namespace {

constexpr std::uint32_t maxAddresses = 65535;

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

}  // namespace

SocketAddressList ResolveHost(const char* host) {
  SocketAddressList list;
  if (host == nullptr || *host == '\0') return list;
  if (IsDigit(*host)) {
    list.Append(SocketAddress(os::system->inet_addr(host)));
    return list;
  }
  const os::HostEntry* entry = os::system->gethostbyname(host);
  if (entry == nullptr) return list;
  std::uint32_t count = 0;
  while (count < maxAddresses && entry->addresses[count] != nullptr) ++count;
  list.Reserve(count);
  for (std::uint32_t i = 0; i < count; ++i) {
    std::uint32_t address;
    std::memcpy(&address, entry->addresses[i], sizeof address);
    list.Append(SocketAddress(address));
  }
  return list;
}

}  // namespace kest
