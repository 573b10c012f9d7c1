// A commerce server behind the seam: sockets that lead to a function which answers each request. It plays the server's
// half of the sealed exchange with the library's own ciphers, as honestly or not as a test wants; the real server of the
// road tests is the one that shares no code with the library. Its public key has the exponent 1, so that a sealed
// handshake can be read without a private key.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/forwarding_system.h"

namespace kest::testing {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct ServerRequest {
  std::string head;  // up to and with the empty line
  std::string body;
  std::string host;  // what was connected to, dotted
  std::uint16_t port = 0;
  int number = 0;  // of this server's requests, from 1

  // The value of a header field, letter by letter as it came; empty when there is none.
  std::string Header(const std::string& name) const;
};

class SealedServer : public ForwardingSystem {
 public:
  explicit SealedServer(os::System& target = os::Native());

  // The key text for "TARVOPK": a modulus of `bytes` bytes that ends with `last`, exponent 1.
  static std::string KeyText(std::uint32_t bytes = 128, char last = '\x0F');

  // Answers a whole HTTP reply for each request; what it leaves out is cut off. Default: AnswerHonestly.
  std::function<std::string(SealedServer&, const ServerRequest&)> answer;
  // The fields of an honest reply to the real request, beside those of the sealing.
  Fields replyFields;
  // The fields that an honest handshake reply adds or, for the sealing's own names, says instead.
  Fields handshakeFields;

  std::string AnswerHonestly(const ServerRequest& request);
  bool IsHandshake(const ServerRequest& request) const { return request.Header("KEST-Auth-CID").empty(); }
  // Opens a handshake or a request of the session under way; its text behind the digest, with the final empty line.
  std::string OpenHandshake(const ServerRequest& request);
  std::string OpenRequest(const ServerRequest& request);
  // A sealed HTTP reply with these fields; the text form first goes through `edit` (digest and text as one).
  std::string Reply(const Fields& fields, const std::function<void(std::string&)>& edit = nullptr);
  // A sealed HTTP reply of exactly this message, enciphered without looking at it.
  std::string Seal(const std::string& message);
  static std::string Http(const std::string& body, const std::string& statusLine = "HTTP/1.0 200 OK");
  static std::string TextOf(const Fields& fields);
  static std::string DigestOf(const std::string& text);

  std::string clientRac, serverRac = "server challenge", connectionId = "connection-7";
  std::vector<std::string> lookedUp;     // names given to gethostbyname; each is found
  std::vector<ServerRequest> requests;   // everything that arrived whole
  std::size_t pieceSize = 1u << 20;      // how many bytes one recv delivers at most
  std::uint32_t addressCount = 1;        // how many addresses each name has: 10.0.0.1, 10.0.0.2
  // False for a server that is one of several threads': it then leaves the system in force, which is the process's.
  bool isAlone = true;
  std::size_t OpenSockets() const { return conversations.size(); }
  int WrongCloses() const { return wrongCloses; }  // of sockets that were not open

  os::Socket socket(int family, int type, int protocol) override;
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override;
  int send(os::Socket socket, const void* bytes, int length, int flags) override;
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override;
  int setsockopt(os::Socket socket, int level, int option, const void* value, int length) override;
  int closesocket(os::Socket socket) override;
  const os::HostEntry* gethostbyname(const char* name) override;

 private:
  struct Conversation {
    std::string host;
    std::uint16_t port = 0;
    std::string received;
    std::string reply;
    std::size_t sent = 0;
    bool isAnswered = false;
  };

  void Answer(Conversation& conversation);

  std::map<os::Socket, Conversation> conversations;
  os::Socket nextSocket = 100;
  int wrongCloses = 0;
  std::string exportedKey;  // iv and key bytes, as the handshake delivered them
  // What a look-up answers; each server's own, because servers of several threads answer at once.
  char firstAddress[4] = {10, 0, 0, 1}, secondAddress[4] = {10, 0, 0, 2};
  char* addresses[3] = {firstAddress, nullptr, nullptr};
  const os::HostEntry hostEntry = {nullptr, nullptr, os::addressFamilyInet, 4, addresses};
};

}  // namespace kest::testing
