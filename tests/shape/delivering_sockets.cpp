#include "shape/delivering_sockets.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace kest::testing {

void DeliveringSockets::Begin(const std::vector<Stream>& streamsToSend, const std::vector<Delivery>& waysToSend) {
  streams = &streamsToSend;
  ways = &waysToSend;
  accepted = 0;
  bytesDelivered = 0;
  sent.clear();
  addresses.clear();
}

std::vector<std::string> DeliveringSockets::Attempts() const {
  std::vector<std::string> attempts;
  for (std::size_t i = 0; i < sent.size(); ++i) {
    const std::size_t begin = sent[i].find(' ');
    const std::string target = sent[i].substr(begin + 1, sent[i].find(' ', begin + 1) - begin - 1);
    attempts.push_back((addresses[i].empty() ? "same" : addresses[i]) + " " + target);
  }
  return attempts;
}

int DeliveringSockets::WSAStartup(std::uint16_t version, os::SocketLibraryData* data) {
  data->version = data->highVersion = version;
  return 0;
}

os::Socket DeliveringSockets::socket(int, int, int) {
  open[nextSocket] = Connection();
  return nextSocket++;
}

int DeliveringSockets::connect(os::Socket socket, const os::SocketAddress* to, int) {
  std::uint8_t bytes[4], port[2];
  std::memcpy(bytes, &to->address, sizeof bytes);
  std::memcpy(port, &to->port, sizeof port);
  if (accepted == streams->size() || to->address == ~std::uint32_t{0}) return -1;
  char text[32];
  std::snprintf(text, sizeof text, "%d.%d.%d.%d:%d", bytes[0], bytes[1], bytes[2], bytes[3], port[0] * 256 + port[1]);
  address = text;
  Connection& connection = open.at(socket);
  connection.stream = &(*streams)[accepted];
  connection.delivery = &(*ways)[accepted];
  ++accepted;
  return 0;
}

int DeliveringSockets::send(os::Socket socket, const void* bytes, int length, int) {
  Connection& connection = open.at(socket);
  if (connection.stream == nullptr) return -1;
  if (!connection.isAsked) {
    sent.emplace_back();
    addresses.push_back(connection.received == 0 ? address : "");
    connection.isAsked = true;
  }
  sent.back().append(static_cast<const char*>(bytes), static_cast<std::size_t>(length));
  return length;
}

bool DeliveringSockets::HasMore(Connection& connection) {
  const Stream& answers = *connection.stream;
  if (connection.answer < answers.size() && connection.at == answers[connection.answer].size()) {
    ++connection.answer;
    connection.at = 0;
  }
  // The next answer waits for its request.
  if (connection.at == 0 && !connection.isAsked) return false;
  return connection.answer < answers.size() && !answers[connection.answer].empty() &&
         connection.received < connection.delivery->cut;
}

int DeliveringSockets::recv(os::Socket socket, void* bytes, int capacity, int) {
  Connection& connection = open.at(socket);
  if (connection.stream == nullptr) return -1;
  const Delivery& delivery = *connection.delivery;
  if (!HasMore(connection)) return delivery.ending;
  connection.isAsked = false;
  const std::string& answer = (*connection.stream)[connection.answer];
  std::size_t count = std::min({static_cast<std::size_t>(capacity), answer.size() - connection.at, delivery.pieceSize,
                                delivery.cut - connection.received});
  if (connection.received < delivery.split) count = std::min(count, delivery.split - connection.received);
  std::memcpy(bytes, answer.data() + connection.at, count);
  connection.at += count;
  connection.received += count;
  bytesDelivered += count;
  return static_cast<int>(count);
}

const os::HostEntry* DeliveringSockets::gethostbyname(const char*) {
  static char found[] = {10, 0, 0, 1};
  static char* list[] = {found, nullptr};
  static const os::HostEntry entry = {nullptr, nullptr, os::addressFamilyInet, 4, list};
  return &entry;
}

std::uint32_t DeliveringSockets::inet_addr(const char* dotted) {
  unsigned parts[4];
  char rest;
  if (std::sscanf(dotted, "%u.%u.%u.%u%c", &parts[0], &parts[1], &parts[2], &parts[3], &rest) != 4) return ~0u;
  const std::uint8_t bytes[4] = {static_cast<std::uint8_t>(parts[0]), static_cast<std::uint8_t>(parts[1]),
                                 static_cast<std::uint8_t>(parts[2]), static_cast<std::uint8_t>(parts[3])};
  std::uint32_t value;
  std::memcpy(&value, bytes, sizeof value);
  return value;
}

}  // namespace kest::testing
