// The server's RSA key pair: made once by init, read by serve. It owns the private key and wipes it when destroyed; its
// texts are the caller's to keep safe. One thread at a time may use an object.
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace sandbox {

class KeyPair {
 public:
  /// Makes a new pair with a modulus of that many bits and the public exponent 65537.
  static KeyPair Generate(unsigned bits);

  /// Reads a private key: PKCS#8 (RFC 5208) in PEM (RFC 7468) or as bare base64 of its DER. Throws std::runtime_error
  /// with the reason in words when the text is no sound RSA key with a modulus of 512 to 2048 bits.
  static KeyPair FromPrivateText(std::string_view text);

  KeyPair(KeyPair&&) noexcept;
  KeyPair& operator=(KeyPair&&) noexcept;
  ~KeyPair();

  /// Returns the private key as PKCS#8 PEM.
  std::string PrivateText() const;

  /// Returns what clients are configured with: one line, base64 of the DER SubjectPublicKeyInfo (RFC 5280 section 4.1).
  std::string PublicText() const;

  /// Returns the length of the modulus in bytes.
  std::size_t BlockSize() const;

  /// Runs the raw private operation (RFC 8017 section 5.1.2, no padding removed) on BlockSize() big-endian bytes and
  /// returns as many. Returns nothing when the block has another length or is not below the modulus.
  std::optional<std::string> Decipher(std::string_view block) const;

 private:
  struct Keys;
  explicit KeyPair(std::unique_ptr<Keys> made);

  std::unique_ptr<Keys> keys;
};

}  // namespace sandbox
