// A client of the commerce protocol, written from the client's side alone so that it checks the server: it shares no
// code with it. Every step can be taken apart, for tests that have to get one wrong.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "sandbox/socket.h"

namespace sandboxtest {

using Fields = std::vector<std::pair<std::string, std::string>>;

struct HttpReply {
  int status = -1;  // -1: no whole reply came
  std::string statusLine;
  Fields headers;
  std::string body;
};

std::string Base64(const std::string& bytes);
std::optional<std::string> FromBase64(const std::string& text);
std::string RandomBytes(std::size_t length);
std::string Sha1(const std::string& bytes);

/// Returns the value of the first field of exactly that name, or the text "(absent)".
std::string Value(const Fields& fields, const std::string& name);

/// Replaces the value of that field.
void Replace(Fields& fields, const std::string& name, const std::string& value);

/// Reads a reply to the end of the connection: status line, header fields and a body of "Content-Length" bytes; status
/// -1 when it is cut short, longer or ended by a reset.
HttpReply ReadReply(Socket& socket);

class TestClient {
 public:
  /// Takes the port of the server and the text of its public key.
  TestClient(std::uint16_t serverPort, const std::string& keyText);

  /// Draws a new session key and challenge and forgets the connection.
  void NewSession();

  Fields HandshakeFields() const;
  Fields RequestFields(const std::string& service, const Fields& own = {}) const;

  static std::string HeaderBlock(const Fields& fields);
  static std::string WithDigest(const std::string& text);
  /// Seals for the server key; the message must hold its zero byte already.
  std::string SealForServer(const std::string& messageWithZero) const;
  /// Seals with the session key; the message must hold its zero byte already.
  std::string SealForSession(const std::string& messageWithZero) const;
  std::string HandshakeBody(const Fields& fields) const;
  std::string RequestBody(const Fields& fields) const;

  /// Writes the head that a client owes; names the connection when there is one.
  std::string Head(const std::string& path, std::size_t bodyLength) const;

  /// Sends bytes over a connection of its own and reads the reply.
  HttpReply Send(const std::string& bytes) const;

  /// Deciphers a reply body to digest, text and zero byte; throws when it is not whole.
  std::string Decipher(const std::string& body) const;

  /// Deciphers a reply body and leaves its padding, right or wrong, where it is.
  std::string DecipherBlocks(const std::string& body) const;

  /// Deciphers a reply body, checks its digest and returns its fields; nothing when something is wrong.
  std::optional<Fields> Open(const std::string& body) const;

  /// Runs the handshake and keeps what it gave; false when anything in the reply is not as it must be.
  bool Handshake(const std::string& service = "GetProductList");

  /// Sends a request within the session and returns the reply as it came.
  HttpReply Request(const std::string& service, const Fields& own = {}) const;

  /// Runs handshake and request and checks both challenges; nothing when anything is wrong.
  std::optional<Fields> Call(const std::string& service, const Fields& own = {});

  std::string iv;
  std::string key;
  std::string clientRac;
  std::string serverRac;
  std::string connectionId;

 private:
  std::uint16_t port;
  std::string publicKey;  // DER
};

}  // namespace sandboxtest
