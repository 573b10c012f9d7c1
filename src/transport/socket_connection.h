// One blocking TCP connection to one server. It owns its socket and closes it when it is destroyed. There are no
// time-outs: every wait is the system's own. A connection belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "os/os.h"
#include "transport/socket_address_list.h"

namespace kest {

class SocketConnection {
 public:
  // What Close takes to leave lingering to the system.
  static constexpr std::int32_t ordinaryClose = -1;

  SocketConnection() = default;
  SocketConnection(const SocketConnection&) = delete;
  SocketConnection& operator=(const SocketConnection&) = delete;
  ~SocketConnection() { Close(ordinaryClose); }

  // Closes the open socket, if there is one, and connects to the first address of `host` that answers. False, and
  // closed, when none does or there is no socket. `port` is in the machine's byte order. Throws Qor::MemoryException,
  // and is closed, when there is no memory.
  bool Connect(const String& host, std::uint16_t port);

  // Sends all of `length` bytes; a length below 1 succeeds at once. False when the system sends none or fails; what was
  // sent before stays sent.
  bool Send(const void* bytes, std::int32_t length);

  // Receives once: the count of bytes, at most `capacity`; 0 at the end of the stream, -1 on an error.
  std::int32_t Receive(void* bytes, std::uint32_t capacity);

  // Closes the socket, if it is open. `lingerSeconds` of zero or more let the system try that long to send what is
  // unsent; below zero the system does not linger.
  void Close(std::int32_t lingerSeconds);

  bool IsOpen() const { return socket != os::invalidSocket; }
  // The addresses of the last Connect.
  const SocketAddressList& Addresses() const { return addresses; }

 private:
  bool ConnectToAny(std::uint16_t port);

  os::Socket socket = os::invalidSocket;
  SocketAddressList addresses;
};

}  // namespace kest
