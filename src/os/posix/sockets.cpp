#include "os/posix/sockets.h"

#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>

#include <cerrno>
#include <cstring>

#include "os/posix/host_entries.h"

namespace os::posix {
namespace {

int Finish(int descriptor) {
  pollfd waiting{descriptor, POLLOUT, 0};
  while (poll(&waiting, 1, -1) < 0) {
    if (errno != EINTR) return -1;
  }
  int error = 0;
  socklen_t length = sizeof error;
  if (getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length) != 0) return -1;
  return error == 0 ? 0 : -1;
}

}  // namespace

Socket OpenSocket(int family, int type, int protocol) {
  const int descriptor = ::socket(family == addressFamilyInet ? AF_INET : family,
                                  (type == socketTypeStream ? SOCK_STREAM : type) | SOCK_CLOEXEC, protocol);
  return descriptor < 0 ? invalidSocket : static_cast<Socket>(descriptor);
}

int Connect(Socket socket, const SocketAddress* address, int length) {
  const int descriptor = static_cast<int>(socket);
  if (::connect(descriptor, reinterpret_cast<const sockaddr*>(address), static_cast<socklen_t>(length)) == 0) return 0;
  // A signal ends the call, not the connecting.
  return errno == EINTR ? Finish(descriptor) : -1;
}

int Send(Socket socket, const void* bytes, int length, int flags) {
  ssize_t sent;
  do {
    sent = ::send(static_cast<int>(socket), bytes, static_cast<std::size_t>(length), flags | MSG_NOSIGNAL);
  } while (sent < 0 && errno == EINTR);
  return static_cast<int>(sent);
}

int Receive(Socket socket, void* bytes, int capacity, int flags) {
  ssize_t got;
  do {
    got = ::recv(static_cast<int>(socket), bytes, static_cast<std::size_t>(capacity), flags);
  } while (got < 0 && errno == EINTR);
  return static_cast<int>(got);
}

int SetOption(Socket socket, int level, int option, const void* value, int length) {
  if (level != socketLevel || option != optionLinger || length != sizeof(Linger)) return -1;
  Linger wanted;
  std::memcpy(&wanted, value, sizeof wanted);
  const linger native{wanted.on, wanted.seconds};
  return setsockopt(static_cast<int>(socket), SOL_SOCKET, SO_LINGER, &native, sizeof native);
}

const HostEntry* LookUp(const char* name) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  if (getaddrinfo(name, nullptr, &hints, &found) != 0) return nullptr;
  std::size_t count = 0;
  for (const addrinfo* info = found; info != nullptr; info = info->ai_next) ++count;
  HostEntry* entry = RenewHostEntry(count);
  std::size_t i = 0;
  for (const addrinfo* info = found; info != nullptr && entry != nullptr; info = info->ai_next, ++i) {
    const auto* address = reinterpret_cast<const sockaddr_in*>(info->ai_addr);
    std::memcpy(entry->addresses[i], &address->sin_addr.s_addr, sizeof(std::uint32_t));
  }
  freeaddrinfo(found);
  return entry;
}

}  // namespace os::posix
