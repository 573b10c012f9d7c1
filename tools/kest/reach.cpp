#include "reach.h"

#ifdef _WIN32
#include <winsock2.h>
#include <ws2tcpip.h>
#else
#include <fcntl.h>
#include <netdb.h>
#include <sys/select.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace kest_host {
namespace {

constexpr long secondsToConnect = 5;

#ifdef _WIN32
using Socket = SOCKET;
constexpr Socket noSocket = INVALID_SOCKET;
void Close(Socket opened) {
  closesocket(opened);
}
bool StopBlocking(Socket opened) {
  u_long on = 1;
  return ioctlsocket(opened, FIONBIO, &on) == 0;
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
bool StopBlocking(Socket opened) {
  return fcntl(opened, F_SETFL, O_NONBLOCK) == 0;
}

struct Network {
  bool started = true;
};
#endif

// Waits for a connection that was begun. A failed one is writable too, or exceptional under Windows.
bool IsConnected(Socket opened) {
  fd_set writable, failed;
  FD_ZERO(&writable);
  FD_ZERO(&failed);
  FD_SET(opened, &writable);
  FD_SET(opened, &failed);
  timeval patience = {secondsToConnect, 0};
  if (select(static_cast<int>(opened) + 1, nullptr, &writable, &failed, &patience) <= 0) return false;
  int error = 0;
  socklen_t size = sizeof error;
  return getsockopt(opened, SOL_SOCKET, SO_ERROR, reinterpret_cast<char*>(&error), &size) == 0 && error == 0;
}

bool CanConnect(const addrinfo& address) {
  const Socket opened = socket(address.ai_family, address.ai_socktype, address.ai_protocol);
  if (opened == noSocket) return false;
  const bool connected =
      StopBlocking(opened) &&
      (connect(opened, address.ai_addr, static_cast<socklen_t>(address.ai_addrlen)) == 0 || IsConnected(opened));
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
