// What the server holds its clients to, where no option says otherwise, and the table of all limits for its page.
// Constant data: any thread may read it.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

namespace sandbox {

// Each block costs a private operation, so a body as long as a request may be would keep the server busy for minutes.
constexpr std::size_t longestHandshake = 4096;  // bytes, without the base64

constexpr std::size_t longestServicePath = 255;  // bytes of a handshake's path, which its session holds
constexpr std::size_t mostFields = 100000;       // of a sealed message
constexpr std::size_t mostPairs = 100;           // of a line of an order

// A bill is asked for with a small request, again and again, and is as long as the order was.
constexpr std::size_t mostOrderLines = 10000;

// Bodies up to this length, of requests and of replies, are let in with their connection. Of longer ones the requests
// that are open at the same time may announce this many times the limit of one.
constexpr std::size_t smallBody = 16 * 1024;  // bytes
constexpr std::size_t bodiesAtOnce = 4;

// How long the server reads on after its reply. A socket closed while unread bytes wait is reset, and a reset can
// overtake a reply that the client has not read yet.
constexpr std::chrono::milliseconds drainTime{2000};

// File descriptors that are not for connections: log, listening sockets, the database, the admin port's connections.
constexpr std::size_t mostAdminConnections = 16;
constexpr std::size_t sparedDescriptors = 32 + mostAdminConnections;

constexpr std::size_t longestAdminHead = 16 * 1024;  // bytes
constexpr std::size_t longestAdminBody = 64 * 1024;  // bytes
constexpr std::chrono::seconds adminTime{30};

constexpr int lockMilliseconds = 1000;  // for as long as this another program may hold the database

// What the process takes with all options at their defaults, whoever its clients are.
constexpr std::size_t mostMemory = 512;  // MB

struct LimitRow {
  std::string what;
  std::string limit;
  const char* beyond;
};

/// Returns every limit with its default and what happens beyond it.
std::vector<LimitRow> Limits();

}  // namespace sandbox
