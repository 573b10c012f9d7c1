#include "reach.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <netdb.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace kest_host {
namespace {

#ifdef _WIN32
using Socket = SOCKET;
constexpr Socket noSocket = INVALID_SOCKET;
void Close(Socket opened) {
  closesocket(opened);
}

struct Network {
  WSADATA data{};
  bool started = WSAStartup(MAKEWORD(2, 2), &data) == 0;
  ~Network() {
    if (started) WSACleanup();
  }
};
#else
using Socket = int;
constexpr Socket noSocket = -1;
void Close(Socket opened) {
  close(opened);
}

struct Network {
  bool started = true;
};
#endif

bool CanConnect(const addrinfo& address) {
  const Socket opened = socket(address.ai_family, address.ai_socktype, address.ai_protocol);
  if (opened == noSocket) return false;
  const bool connected = connect(opened, address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) == 0;
  Close(opened);
  return connected;
}

}  // namespace

bool CanConnect(const std::string& host, std::uint16_t port) {
  const Network network;
  if (!network.started) return false;
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(host.c_str(), std::to_string(port).c_str(), &hints, &found) != 0) return false;
  bool connected = false;
  for (const addrinfo* address = found; address != nullptr && !connected; address = address->ai_next) {
    connected = CanConnect(*address);
  }
  freeaddrinfo(found);
  return connected;
}

}  // namespace kest_host
