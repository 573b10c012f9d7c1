#include "sandbox/socket.h"

#include <arpa/inet.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>

namespace sandboxtest {

Socket::Socket(std::uint16_t port) : handle(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const timeval patience{60, 0};
  ::setsockopt(handle, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  if (::connect(handle, reinterpret_cast<sockaddr*>(&address), sizeof address) == 0) return;
  ::close(handle);
  handle = -1;
}

Socket::~Socket() {
  if (handle >= 0) ::close(handle);
}

bool Socket::Send(const std::string& bytes) {
  std::size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t count = ::send(handle, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<std::size_t>(count);
  }
  return true;
}

void Socket::TakeLittle() {
  const int bytes = 1;  // the system makes its least of it
  ::setsockopt(handle, SOL_SOCKET, SO_RCVBUF, &bytes, sizeof bytes);
}

void Socket::SendLittleAhead() {
  const int bytes = 65536;
  ::setsockopt(handle, SOL_SOCKET, SO_SNDBUF, &bytes, sizeof bytes);
}

void Socket::EndSending() {
  ::shutdown(handle, SHUT_WR);
}

bool Socket::AnswersWithin(int milliseconds) {
  pollfd waiting = {handle, POLLIN, 0};
  return ::poll(&waiting, 1, milliseconds) > 0;
}

std::string Socket::ReadToEnd(bool& orderly) {
  std::string bytes;
  char piece[4096];
  for (;;) {
    const ssize_t count = ::recv(handle, piece, sizeof piece, 0);
    orderly = count >= 0;
    silent = count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK);
    if (count <= 0) return bytes;
    bytes.append(piece, static_cast<std::size_t>(count));
  }
}

}  // namespace sandboxtest
