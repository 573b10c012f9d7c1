// The session of one commerce request: its key, both challenges, and the sealing and opening of messages. It holds
// secrets, lives for one request and belongs to one thread.
#pragma once

#include "core/name_value_list.h"
#include "core/string.h"
#include "crypto/session_cipher.h"

namespace kest {

class AuthSession {
 public:
  // Makes a new session key (1024 bits and an 8-byte iv) and a new client challenge (base64 of 48 random bytes, 64
  // characters) from fresh entropy. False when either cannot be made.
  bool Begin();

  // The session key for the server: base64 of iv (8 bytes) and key (128 bytes). Empty on failure.
  String ExportedKey();

  // Seals fields into the text of a message body: sets the challenges and the protocol version in `fields`, writes them
  // as header lines with an empty line behind, puts the base64 SHA-1 digest of that text in front, and enciphers it all,
  // under the server's public key for a handshake, else under the session key; base64. Empty on failure.
  String SealMessage(NameValueList& fields, bool isHandshake);

  // Opens a reply body: deciphers it under the session key, checks digest and challenges and appends the fields to
  // `fields`. The first reply's server challenge is taken over, later ones must be the same. False when anything does not
  // hold; the known server challenge is then unchanged, `fields` may hold what was read.
  bool OpenMessage(const String& body, NameValueList& fields);

  // The connection identifier that the handshake's reply gave; empty when it gave none.
  const String& ConnectionId() const { return connectionId; }
  void SetConnectionId(const String& id) { connectionId = id; }

 private:
  bool AcceptChallenges(const NameValueList& fields);

  SessionCipher sessionKey;
  String clientRac;
  String serverRac;
  String connectionId;
};

}  // namespace kest
