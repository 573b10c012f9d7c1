#include "transport/socket_connection.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace kest {

bool SocketConnection::Connect(const String& host, std::uint16_t port) {
  Close(ordinaryClose);
  socket = os::system->socket(os::addressFamilyInet, os::socketTypeStream, 0);
  if (socket == os::invalidSocket) return false;
  try {
    addresses = ResolveHost(host.Characters());
  } catch (...) {
    Close(ordinaryClose);
    throw;
  }
  if (ConnectToAny(os::system->htons(port))) return true;
  Close(ordinaryClose);
  return false;
}

bool SocketConnection::ConnectToAny(std::uint16_t port) {
  for (std::uint32_t i = 0; i < addresses.Count(); ++i) {
    os::SocketAddress& address = addresses.At(i).value;
    address.port = port;
    if (os::system->connect(socket, &address, sizeof address) != -1) return true;
  }
  return false;
}

bool SocketConnection::Send(const void* bytes, std::int32_t length) {
  const auto* unsent = static_cast<const char*>(bytes);
  while (length > 0) {
    const int sent = os::system->send(socket, unsent, length, 0);
    // Nothing sent is a failure too: asking again could go on for ever.
    if (sent <= 0) return false;
    unsent += sent;
    length -= sent;
  }
  return true;
}

std::int32_t SocketConnection::Receive(void* bytes, std::uint32_t capacity) {
  constexpr std::uint32_t most = std::numeric_limits<std::int32_t>::max();
  return os::system->recv(socket, bytes, static_cast<int>(std::min(capacity, most)), 0);
}

void SocketConnection::Close(std::int32_t lingerSeconds) {
  if (!IsOpen()) return;
  os::Linger linger{0, 0};
  if (lingerSeconds >= 0) linger = {1, static_cast<std::uint16_t>(lingerSeconds)};
  os::system->setsockopt(socket, os::socketLevel, os::optionLinger, &linger, sizeof linger);
  os::system->closesocket(std::exchange(socket, os::invalidSocket));
}

}  // namespace kest
