// Sockets that lead to peers which say what they like, for as long as they like, whatever they are asked and whether
// they were asked or not. Every name is found as 10.0.0.1.
#pragma once

#include <algorithm>
#include <cstring>
#include <limits>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

// What the peer does on one connection.
struct Peer {
  static constexpr std::size_t noEnd = std::numeric_limits<std::size_t>::max();

  std::string first = {};      // what it says
  std::string again = {};      // and then again and again
  std::size_t most = noEnd;    // until it has said so many bytes; without `again`, no more than `first`
  int ending = 0;              // what recv answers then: 0 closed, -1 reset
  std::size_t takes = noEnd;   // how many bytes it lets itself be sent before its side is closed
  std::size_t atOnce = noEnd;  // how many of them one send takes
};

class HostileSockets : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  // Set by the test: the n-th connection leads to the n-th peer, and each behind the last to that one.
  std::vector<Peer> peers;

  std::size_t Connections() const { return connections; }
  std::size_t OpenSockets() const { return open.size(); }
  std::size_t Received() const { return received; }  // bytes, by the client, since Restart
  std::size_t Sent() const { return sent; }          // bytes, by the client, since Restart
  void Restart() { connections = received = sent = 0; }

  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    data->version = data->highVersion = version;
    return 0;
  }
  os::Socket socket(int, int, int) override {
    open[nextSocket] = Connection();
    return nextSocket++;
  }
  int connect(os::Socket socket, const os::SocketAddress*, int) override {
    if (peers.empty()) return -1;
    open.at(socket).peer = &peers[std::min(connections++, peers.size() - 1)];
    return 0;
  }
  int send(os::Socket socket, const void*, int length, int) override {
    Connection& connection = open.at(socket);
    const Peer& peer = *connection.peer;
    const std::size_t count = std::min({static_cast<std::size_t>(length), peer.atOnce, peer.takes - connection.taken});
    if (count == 0) return -1;
    connection.taken += count;
    sent += count;
    return static_cast<int>(count);
  }
  int recv(os::Socket socket, void* bytes, int capacity, int) override {
    Connection& connection = open.at(socket);
    const Peer& peer = *connection.peer;
    const std::size_t end = peer.again.empty() ? std::min(peer.first.size(), peer.most) : peer.most;
    const std::size_t count = std::min(static_cast<std::size_t>(capacity), end - connection.said);
    for (std::size_t done = 0; done < count;) done += Say(connection, static_cast<char*>(bytes) + done, count - done);
    received += count;
    return count != 0 ? static_cast<int>(count) : peer.ending;
  }
  int setsockopt(os::Socket, int, int, const void*, int) override { return 0; }
  int closesocket(os::Socket socket) override { return open.erase(socket) == 1 ? 0 : -1; }
  const os::HostEntry* gethostbyname(const char*) override {
    static char found[] = {10, 0, 0, 1};
    static char* list[] = {found, nullptr};
    static const os::HostEntry entry = {nullptr, nullptr, os::addressFamilyInet, 4, list};
    return &entry;
  }

 private:
  struct Connection {
    const Peer* peer = nullptr;
    std::size_t said = 0, taken = 0;
  };

  // The next bytes, as far as they lie together.
  static std::size_t Say(Connection& connection, char* bytes, std::size_t capacity) {
    const Peer& peer = *connection.peer;
    const bool isFirst = connection.said < peer.first.size();
    const std::string& text = isFirst ? peer.first : peer.again;
    const std::size_t at = isFirst ? connection.said : (connection.said - peer.first.size()) % peer.again.size();
    const std::size_t count = std::min(capacity, text.size() - at);
    std::memcpy(bytes, text.data() + at, count);
    connection.said += count;
    return count;
  }

  std::map<os::Socket, Connection> open;
  os::Socket nextSocket = 100;
  std::size_t connections = 0, received = 0, sent = 0;
};

}  // namespace kest::testing
