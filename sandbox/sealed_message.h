// The server's half of the seal: opens the handshake (raw RSA) and the request (RC5-CBC-Pad, RFC 2040, 20 rounds), and
// seals replies. A message is the base64 SHA-1 of a header block, which stands before the block itself. Opening throws
// Refused with the first thing that is wrong. No state of its own: any thread may call, a KeyPair on one thread at a
// time.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "fields.h"
#include "key_pair.h"

namespace sandbox {

/// Holds the key that a client made for one session and wipes it when destroyed.
class SessionKey {
 public:
  static constexpr std::size_t ivLength = 8;
  static constexpr std::size_t keyLength = 128;

  /// Takes 136 bytes: the initialisation vector, then the key. Throws Refused when there are more or fewer.
  explicit SessionKey(std::string_view exported);
  SessionKey(const SessionKey&) = default;
  SessionKey& operator=(const SessionKey&) = default;
  ~SessionKey();

  const unsigned char* Iv() const { return bytes.data(); }
  const unsigned char* Key() const { return bytes.data() + ivLength; }

 private:
  std::array<unsigned char, ivLength + keyLength> bytes;
};

/// Opens the body of a handshake: base64 of one block of BlockSize() bytes for each BlockSize() - 1 bytes of message,
/// the message ended by a zero byte in the last block.
FieldList OpenHandshake(std::string_view body, const KeyPair& keyPair);

/// Opens the body of a request: base64 of the enciphered message and the zero byte that ends it.
FieldList OpenRequest(std::string_view body, const SessionKey& key);

/// What is wrong with the seal of a reply, when a test has asked for that.
enum class SealFault { None, WrongDigest, DigestWithoutZero, BadPadding, BadBase64 };

/// Seals a reply; the zero byte that ends the message is enciphered with it. Returns the body as base64.
std::string SealReply(const FieldList& fields, const SessionKey& key, SealFault fault = SealFault::None);

}  // namespace sandbox
