// Sockets that deliver prepared replies: in pieces, split, cut and then closed or reset. They write down which requests
// went where. Every name is found as 10.0.0.1; nothing listens on 255.255.255.255, nor where no stream is left.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

// What one connection answers: one text for each request that it carries.
using Stream = std::vector<std::string>;

// How the bytes of a stream arrive.
struct Delivery {
  static constexpr std::size_t all = static_cast<std::size_t>(-1);

  std::size_t pieceSize = all;  // the most bytes that one recv gets
  std::size_t split = all;      // no recv gets bytes from both sides of this place
  std::size_t cut = all;        // so many bytes arrive at all
  int ending = 0;               // what recv answers behind the last one: 0 closed, -1 reset
};

class DeliveringSockets : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  // Begins a conversation: the n-th accepted connection gets the n-th stream, delivered in the n-th way. Both outlive
  // it.
  void Begin(const std::vector<Stream>& streamsToSend, const std::vector<Delivery>& waysToSend);

  // Each request as "ADDRESS:PORT TARGET", one on a connection that carried another before as "same TARGET".
  std::vector<std::string> Attempts() const;
  // Everything that was sent, request by request.
  const std::vector<std::string>& Sent() const { return sent; }
  std::size_t OpenSockets() const { return open.size(); }
  std::size_t BytesDelivered() const { return bytesDelivered; }

  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override;
  os::Socket socket(int family, int type, int protocol) override;
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override;
  int send(os::Socket socket, const void* bytes, int length, int flags) override;
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override;
  int setsockopt(os::Socket, int, int, const void*, int) override { return 0; }
  int closesocket(os::Socket socket) override { return open.erase(socket) == 1 ? 0 : -1; }
  const os::HostEntry* gethostbyname(const char* name) override;
  std::uint32_t inet_addr(const char* dotted) override;

 private:
  struct Connection {
    const Stream* stream = nullptr;
    const Delivery* delivery = nullptr;
    std::size_t answer = 0;    // the one that is being delivered
    std::size_t at = 0;        // its next byte
    std::size_t received = 0;  // bytes of the stream so far
    bool isAsked = false;      // since the last answer
  };

  static bool HasMore(Connection& connection);

  const std::vector<Stream>* streams = nullptr;
  const std::vector<Delivery>* ways = nullptr;
  std::size_t accepted = 0;
  std::size_t bytesDelivered = 0;
  std::map<os::Socket, Connection> open;
  os::Socket nextSocket = 100;
  std::vector<std::string> sent;
  std::vector<std::string> addresses;  // of each request; empty where the connection had carried another
  std::string address;                 // of the last connection
};

}  // namespace kest::testing
