#include "road/sandbox_admin.h"

#ifdef _WIN32
#include <winsock.h>
#else
#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>
#endif

#include <stdexcept>

#include "road/road_test.h"

namespace kest_road {
namespace {

#ifdef _WIN32
using Descriptor = SOCKET;
constexpr Descriptor noDescriptor = INVALID_SOCKET;
void CloseDescriptor(Descriptor descriptor) { closesocket(descriptor); }

// Sockets must be started in this process, whatever the library under test does.
const int startedSockets = [] {
  WSADATA data;
  return WSAStartup(MAKEWORD(2, 2), &data);
}();
#else
using Descriptor = int;
constexpr Descriptor noDescriptor = -1;
void CloseDescriptor(Descriptor descriptor) { close(descriptor); }
#endif

// A connection for one request and its reply.
class Connection {
 public:
  Connection(const std::string& host, std::uint16_t port) : descriptor(socket(AF_INET, SOCK_STREAM, 0)) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = inet_addr(host.c_str());
    const bool isOpen = descriptor != noDescriptor &&
                        connect(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
    if (!isOpen) throw std::runtime_error("the server's admin port " + std::to_string(port) + " cannot be reached");
  }
  ~Connection() { CloseDescriptor(descriptor); }
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  void Write(const std::string& text) {
    for (std::size_t sent = 0; sent < text.size();) {
      const auto count = send(descriptor, text.data() + sent, static_cast<int>(text.size() - sent), 0);
      if (count <= 0) throw std::runtime_error("the server's admin port takes no request");
      sent += static_cast<std::size_t>(count);
    }
  }
  std::string ReadToEnd() {
    std::string text;
    char piece[4096];
    for (;;) {
      const auto count = recv(descriptor, piece, sizeof piece, 0);
      if (count <= 0) return text;
      text.append(piece, static_cast<std::size_t>(count));
    }
  }

 private:
  Descriptor descriptor;
};

}  // namespace

SandboxAdmin::SandboxAdmin() {
  const std::string url = Environment("KEST_ADMIN");
  const std::size_t begin = url.find("//") + 2, colon = url.rfind(':');
  host = url.substr(begin, colon - begin);
  port = static_cast<std::uint16_t>(std::stoul(url.substr(colon + 1)));
}

nlohmann::json SandboxAdmin::Send(const std::string& method, const std::string& path, const std::string& body) const {
  Connection connection(host, port);
  connection.Write(method + " " + path + " HTTP/1.1\r\nHost: " + host + ":" + std::to_string(port) +
                   "\r\nContent-Type: application/json\r\nContent-Length: " + std::to_string(body.size()) +
                   "\r\nConnection: close\r\n\r\n" + body);
  const std::string reply = connection.ReadToEnd();
  const std::size_t space = reply.find(' '), head = reply.find("\r\n\r\n");
  if (space == std::string::npos || head == std::string::npos || reply.compare(space + 1, 3, "200") != 0) {
    throw std::runtime_error("the server's admin port answered " + method + " " + path + " with: " + reply);
  }
  return nlohmann::json::parse(reply.substr(head + 4));
}

}  // namespace kest_road
