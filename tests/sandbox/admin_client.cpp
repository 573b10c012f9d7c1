#include "sandbox/admin_client.h"

namespace sandboxtest {

AdminAnswer AdminClient::Send(const std::string& bytes) const {
  Socket socket(port);
  socket.Send(bytes);
  bool orderly = false;
  const std::string reply = socket.ReadToEnd(orderly);
  const std::size_t head = reply.find("\r\n\r\n");
  if (!orderly || head == std::string::npos || reply.rfind("HTTP/1.1 ", 0) != 0) return {};
  const std::string body = reply.substr(head + 4);
  AdminAnswer answer;
  std::size_t at = reply.find("\r\n") + 2;
  for (std::size_t end = reply.find("\r\n", at); at < head; at = end + 2, end = reply.find("\r\n", at)) {
    const std::size_t colon = reply.find(": ", at);
    answer.headers.emplace_back(reply.substr(at, colon - at), reply.substr(colon + 2, end - colon - 2));
  }
  if (Value(answer.headers, "Content-Length") != std::to_string(body.size())) return {};
  answer.status = std::stoi(reply.substr(9));
  answer.json = nlohmann::json::parse(body, nullptr, false);
  answer.body = body;
  return answer;
}

AdminAnswer AdminClient::Get(const std::string& target) const {
  return Send("GET " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\n\r\n");
}

AdminAnswer AdminClient::Post(const std::string& target, const std::string& body) const {
  return Send("POST " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nContent-Type: application/json\r\nContent-Length: " +
              std::to_string(body.size()) + "\r\n\r\n" + body);
}

}  // namespace sandboxtest
