#include "sealed_message.h"

#include <cryptopp/modes.h>
#include <cryptopp/rc5.h>
#include <cryptopp/sha.h>
#include <string.h>

#include <algorithm>

#include "base64.h"
#include "refusal.h"
#include "server_limits.h"
#include "wipe.h"

namespace sandbox {
namespace {

constexpr std::size_t digestLength = 28;
constexpr std::size_t blockLength = 8;
constexpr int rounds = 20;

std::string Digest(std::string_view bytes) {
  std::string digest(CryptoPP::SHA1::DIGESTSIZE, '\0');
  CryptoPP::SHA1().CalculateDigest(reinterpret_cast<unsigned char*>(digest.data()),
                                   reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size());
  return EncodeBase64(digest);
}

// The zero byte that ends the text is part of the digested data.
std::string DigestOfText(const std::string& text) {
  return Digest(std::string_view(text.c_str(), text.size() + 1));
}

std::string DigestOfReply(const std::string& text, SealFault fault) {
  if (fault == SealFault::DigestWithoutZero) return Digest(text);
  std::string digest = DigestOfText(text);
  if (fault == SealFault::WrongDigest) digest.front() = digest.front() == 'A' ? 'B' : 'A';
  return digest;
}

FieldList OpenText(std::string_view message) {
  if (message.size() < digestLength) throw Refused(Refusal::MessageShort);
  const std::string_view digest = message.substr(0, digestLength);
  std::string text(message.substr(digestLength));
  const WipedAtEnd textWiped(text);
  if (digest != DigestOfText(text)) {
    throw Refused(digest == Digest(text) ? Refusal::DigestWithoutZero : Refusal::Digest);
  }
  // Each of them takes many times the five bytes of an empty one.
  const auto lines = static_cast<std::size_t>(std::count(text.begin(), text.end(), '\n'));
  if (lines > mostFields + 1) throw Refused(Refusal::FieldsTooMany);
  std::optional<FieldList> fields = ParseHeaderBlock(text);
  if (!fields) throw Refused(Refusal::HeaderBlock);
  return std::move(*fields);
}

std::string DecodeBody(std::string_view body) {
  std::optional<std::string> bytes = DecodeBase64(body);
  if (!bytes) throw Refused(Refusal::BodyNotBase64);
  return std::move(*bytes);
}

template <typename Cipher>
void RunCipher(std::string& bytes, const SessionKey& key) {
  Cipher cipher;
  cipher.SetKey(key.Key(), SessionKey::keyLength,
                CryptoPP::MakeParameters(CryptoPP::Name::Rounds(), rounds)(
                    CryptoPP::Name::IV(), CryptoPP::ConstByteArrayParameter(key.Iv(), SessionKey::ivLength)));
  unsigned char* data = reinterpret_cast<unsigned char*>(bytes.data());
  cipher.ProcessData(data, data, bytes.size());
}

void RemovePadding(std::string& bytes) {
  const std::size_t padding = static_cast<unsigned char>(bytes.back());
  if (padding < 1 || padding > blockLength) throw Refused(Refusal::CipherPadding);
  const auto begin = bytes.end() - static_cast<std::ptrdiff_t>(padding);
  if (!std::all_of(begin, bytes.end(), [&](char c) { return c == bytes.back(); })) {
    throw Refused(Refusal::CipherPadding);
  }
  bytes.erase(begin, bytes.end());
}

}  // namespace

SessionKey::SessionKey(std::string_view exported) {
  if (exported.size() != bytes.size()) throw Refused(Refusal::ClientKey);
  std::copy(exported.begin(), exported.end(), bytes.begin());
}

SessionKey::~SessionKey() {
  explicit_bzero(bytes.data(), bytes.size());
}

FieldList OpenHandshake(std::string_view body, const KeyPair& keyPair) {
  const std::string sealed = DecodeBody(body);
  const std::size_t length = keyPair.BlockSize();
  if (sealed.empty() || sealed.size() % length != 0) throw Refused(Refusal::RsaLength);
  if (sealed.size() > longestHandshake) throw Refused(Refusal::RsaTooLong);
  std::string message;
  const WipedAtEnd messageWiped(message);
  message.reserve(sealed.size());
  for (std::size_t at = 0; at < sealed.size(); at += length) {
    std::optional<std::string> block = keyPair.Decipher(std::string_view(sealed).substr(at, length));
    if (!block) throw Refused(Refusal::RsaBlock);
    const WipedAtEnd blockWiped(*block);
    if (block->front() != '\0') throw Refused(Refusal::RsaBlock);
    message.append(*block, 1);
  }
  // What follows the zero byte is not the client's message. It is less than a block: a client sends no block in vain.
  const std::size_t end = message.find('\0');
  if (end == std::string::npos || end / (length - 1) != sealed.size() / length - 1) throw Refused(Refusal::RsaEnd);
  return OpenText(std::string_view(message).substr(0, end));
}

FieldList OpenRequest(std::string_view body, const SessionKey& key) {
  std::string bytes = DecodeBody(body);
  const WipedAtEnd bytesWiped(bytes);
  if (bytes.empty() || bytes.size() % blockLength != 0) throw Refused(Refusal::CipherLength);
  RunCipher<CryptoPP::CBC_Mode<CryptoPP::RC5>::Decryption>(bytes, key);
  RemovePadding(bytes);
  if (bytes.empty() || bytes.find('\0') != bytes.size() - 1) throw Refused(Refusal::MessageEnd);
  return OpenText(std::string_view(bytes).substr(0, bytes.size() - 1));
}

std::string SealReply(const FieldList& fields, const SessionKey& key, SealFault fault) {
  std::string text = FormatHeaderBlock(fields);
  const WipedAtEnd textWiped(text);
  std::string bytes;
  const WipedAtEnd bytesWiped(bytes);
  bytes.reserve(digestLength + text.size() + 1 + blockLength);
  bytes.append(DigestOfReply(text, fault)).append(text).push_back('\0');
  const std::size_t padding = blockLength - bytes.size() % blockLength;
  bytes.append(padding, static_cast<char>(padding));
  if (fault == SealFault::BadPadding) bytes.back() = blockLength + 1;
  RunCipher<CryptoPP::CBC_Mode<CryptoPP::RC5>::Encryption>(bytes, key);
  std::string body = EncodeBase64(bytes);
  if (fault == SealFault::BadBase64) body[body.size() / 2] = '*';
  return body;
}

}  // namespace sandbox
