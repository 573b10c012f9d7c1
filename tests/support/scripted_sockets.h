// A system whose sockets are scripts: tests say what each connection answers and in which pieces, which addresses
// refuse, which call fails, and read back what was sent, in which order, and what was left open. Nothing leaves the
// process. Memory is counted and can fail as in AllocationSystem.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <deque>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "support/allocation_system.h"

namespace kest::testing {

// What the server does on one connection.
struct Conversation {
  // Given one after the other, each when the client reads and has read all before.
  std::vector<std::string> answers = {};
  // Instead of `answers`: makes the answer from what the client sent since the last one.
  std::function<std::string(const std::string& request)> respond = nullptr;
  // The most bytes that the n-th recv gets; the last number holds for all later ones. None: as many as fit.
  std::vector<std::size_t> pieces = {};
  // What recv answers when nothing is left: 0 the end of the stream, -1 an error.
  int ending = 0;
};

// What a test reads back about one connection.
struct ConnectionRecord {
  std::string address;                // "10.0.0.1:80"
  std::string sent;                   // all bytes
  std::vector<std::string> requests;  // the same, cut where answers were made
  bool isOpen = true;
  bool readPastEnd = false;  // a real server might have kept the client waiting here
};

// Fails the n-th call (the first is 1), once or from then on.
class CallFailure {
 public:
  void FailAt(std::uint64_t failPoint, AllocationSystem::Failing how = AllocationSystem::Failing::once) {
    calls = 0;
    point = failPoint;
    failing = how;
  }
  bool Fails() {
    ++calls;
    if (failing == AllocationSystem::Failing::once) return calls == point;
    return failing == AllocationSystem::Failing::fromThenOn && calls >= point;
  }
  std::uint64_t Calls() const { return calls; }

 private:
  AllocationSystem::Failing failing = AllocationSystem::Failing::never;
  std::uint64_t point = 0;
  std::uint64_t calls = 0;
};

class ScriptedSockets : public AllocationSystem {
 public:
  using AllocationSystem::AllocationSystem;

  // Set by the test.
  std::deque<Conversation> conversations;                 // one for each accepted connection, in order
  std::map<std::string, std::vector<std::string>> hosts;  // dotted addresses of each name; other names do not exist
  std::set<std::string> refusing;                         // "10.0.0.1" or "10.0.0.1:81"
  CallFailure sockets, connects, sends, receives;
  int failingSend = -1;       // what a failing send answers
  std::size_t sendLimit = 0;  // the most bytes that one send takes; 0: all
  std::uint16_t grantedVersion = 0x0101;
  int startupResult = 0;
  int cleanupResult = 0;

  // Read back by the test.
  std::vector<std::string> log;  // the socket calls in order
  std::deque<ConnectionRecord> connections;
  std::vector<std::string> lookUps;
  std::vector<std::uint16_t> startups;  // the version words asked for
  int cleanups = 0;
  std::size_t largestBlock = 0;

  std::size_t OpenSockets() const { return openSockets.size(); }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    largestBlock = std::max(largestBlock, bytes);
    return AllocationSystem::GlobalAlloc(flags, bytes);
  }

  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    startups.push_back(version);
    data->version = grantedVersion;
    data->highVersion = 0x0202;
    return startupResult;
  }
  int WSACleanup() override {
    ++cleanups;
    return cleanupResult;
  }

  os::Socket socket(int family, int type, int protocol) override {
    Log("socket %d %d %d", family, type, protocol);
    if (sockets.Fails()) return os::invalidSocket;
    openSockets[nextSocket] = Peer();
    return nextSocket++;
  }

  int connect(os::Socket socket, const os::SocketAddress* address, int length) override {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&address->address);
    const auto* port = reinterpret_cast<const std::uint8_t*>(&address->port);
    char dotted[32];
    std::snprintf(dotted, sizeof dotted, "%d.%d.%d.%d", bytes[0], bytes[1], bytes[2], bytes[3]);
    const std::string full = dotted + (":" + std::to_string(port[0] * 256 + port[1]));
    Log("connect %s", full.c_str());
    const bool isValid = length == 16 && address->family == os::addressFamilyInet && openSockets.count(socket) != 0;
    if (connects.Fails() || !isValid || conversations.empty()) return -1;
    if (refusing.count(dotted) != 0 || refusing.count(full) != 0) return -1;
    Peer& peer = openSockets[socket];
    peer.script = conversations.front();
    conversations.pop_front();
    ConnectionRecord record;
    record.address = full;
    connections.push_back(record);
    peer.record = &connections.back();
    return 0;
  }

  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    Log("send %d", length);
    if (sends.Fails()) return failingSend;
    Peer* peer = Connected(socket);
    if (peer == nullptr || flags != 0) return -1;
    auto count = static_cast<std::size_t>(length);
    if (sendLimit != 0) count = std::min(count, sendLimit);
    peer->unanswered.append(static_cast<const char*>(bytes), count);
    peer->record->sent.append(static_cast<const char*>(bytes), count);
    return static_cast<int>(count);
  }

  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    Log("recv %d", capacity);
    if (receives.Fails()) return -1;
    Peer* peer = Connected(socket);
    if (peer == nullptr || flags != 0) return -1;
    if (peer->pending.empty() && !Answer(*peer)) {
      peer->record->readPastEnd = true;
      return peer->script.ending;
    }
    std::size_t count = std::min(static_cast<std::size_t>(capacity), peer->pending.size() - peer->given);
    count = std::min(count, NextPiece(*peer));
    std::memcpy(bytes, peer->pending.data() + peer->given, count);
    peer->given += count;
    if (peer->given == peer->pending.size()) {
      peer->pending.clear();
      peer->given = 0;
    }
    return static_cast<int>(count);
  }

  int setsockopt(os::Socket, int level, int option, const void* value, int length) override {
    os::Linger linger{};
    if (length == sizeof linger) std::memcpy(&linger, value, sizeof linger);
    Log("setsockopt %d %d %d: %d %d", level, option, length, linger.on, linger.seconds);
    return -1;  // whoever closes does not care
  }

  int closesocket(os::Socket socket) override {
    Log("closesocket");
    if (Peer* peer = Connected(socket)) peer->record->isOpen = false;
    return openSockets.erase(socket) != 0 ? 0 : -1;
  }

  const os::HostEntry* gethostbyname(const char* name) override {
    lookUps.push_back(name);
    const auto found = hosts.find(name);
    if (found == hosts.end()) return nullptr;
    addresses.clear();
    for (const std::string& dotted : found->second) addresses.push_back(inet_addr(dotted.c_str()));
    pointers.clear();
    for (std::uint32_t& address : addresses) pointers.push_back(reinterpret_cast<char*>(&address));
    pointers.push_back(nullptr);
    entry = os::HostEntry{nullptr, nullptr, os::addressFamilyInet, 4, pointers.data()};
    return &entry;
  }

  std::uint32_t inet_addr(const char* dotted) override {
    unsigned parts[4];
    char rest;
    if (std::sscanf(dotted, "%u.%u.%u.%u%c", &parts[0], &parts[1], &parts[2], &parts[3], &rest) != 4) return ~0u;
    std::uint8_t bytes[4];
    for (int i = 0; i < 4; ++i) bytes[i] = static_cast<std::uint8_t>(parts[i]);
    std::uint32_t address;
    std::memcpy(&address, bytes, sizeof address);
    return address;
  }

 private:
  struct Peer {
    Conversation script;
    ConnectionRecord* record = nullptr;
    std::string unanswered;
    std::string pending;
    std::size_t given = 0;
    std::size_t answered = 0;
    std::size_t reads = 0;
  };

  template <typename... Arguments>
  void Log(const char* format, Arguments... arguments) {
    char line[128];
    std::snprintf(line, sizeof line, format, arguments...);
    log.push_back(line);
  }
  void Log(const char* line) { log.push_back(line); }

  Peer* Connected(os::Socket socket) {
    const auto found = openSockets.find(socket);
    return found != openSockets.end() && found->second.record != nullptr ? &found->second : nullptr;
  }

  static bool Answer(Peer& peer) {
    if (peer.script.respond) {
      peer.pending = peer.script.respond(peer.unanswered);
    } else if (peer.answered < peer.script.answers.size()) {
      peer.pending = peer.script.answers[peer.answered++];
    }
    peer.record->requests.push_back(peer.unanswered);
    peer.unanswered.clear();
    return !peer.pending.empty();
  }

  static std::size_t NextPiece(Peer& peer) {
    const auto& pieces = peer.script.pieces;
    if (pieces.empty()) return std::string::npos;
    return pieces[std::min(peer.reads++, pieces.size() - 1)];
  }

  std::map<os::Socket, Peer> openSockets;
  os::Socket nextSocket = 100;
  std::vector<std::uint32_t> addresses;
  std::vector<char*> pointers;
  os::HostEntry entry{};
};

}  // namespace kest::testing
