#include "transport/auth_session.h"

#include "crypto/constant_time.h"
#include "crypto/message_digest.h"
#include "crypto/random_generator.h"
#include "transport/character_reader.h"
#include "transport/header_block.h"
#include "transport/message_check.h"
#include "transport/rsa_sealing.h"

namespace kest {
namespace {

constexpr std::uint16_t keyBits = 1024;
constexpr std::uint16_t challengeLength = 48;  // bytes

constexpr char clientRacName[] = "KEST-Auth-Client-RAC";
constexpr char serverRacName[] = "KEST-Auth-Server-RAC";

// Base64 of SHA-1 over `text` and its terminating zero byte, which is part of the digested data. Empty on failure.
String DigestOf(const String& text) {
  String encoded;
  const ByteBuffer digest = DigestText(text, sha1Descriptor);
  digest.EncodeBase64(encoded);
  return encoded;
}

bool EqualSecrets(const String& a, const String& b) {
  return a.Length() == b.Length() && EqualBytes(a.Characters(), b.Characters(), a.Length());
}

}  // namespace

bool AuthSession::Begin() {
  if (!sessionKey.MakeKey(keyBits, nullptr, 0)) return false;
  RandomGenerator generator;
  ByteBuffer challenge;
  std::uint8_t* bytes = challenge.TakeBuffer(challengeLength);
  const bool isDrawn = generator.SeedFromEntropy(challengeLength) && generator.GenerateBytes(bytes, challengeLength);
  challenge.ReturnBuffer();
  generator.Destroy();
  if (isDrawn) challenge.EncodeBase64(clientRac);
  return isDrawn;
}

String AuthSession::ExportedKey() {
  String text;
  sessionKey.ExportKey().EncodeBase64(text);
  return text;
}

String AuthSession::SealMessage(NameValueList& fields, bool isHandshake) {
  fields.Set(clientRacName, clientRac);
  fields.Set(serverRacName, serverRac);
  fields.Set("KEST-Protocol-Version", "1.1");
  String text;
  text.Reserve(HeaderLinesLength(fields) + 2);
  AppendHeaderLines(fields, text);
  text.Append("\r\n", 2);

  String message = DigestOf(text);
  if (message.IsEmpty()) return String();
  message.Reserve(std::uint64_t{message.Length()} + text.Length());
  message.Append(text);
  // The terminating zero byte is enciphered too: it ends the message for the receiver.
  const ByteBuffer plain(message.Characters(), message.Length() + 1);
  const ByteBuffer sealed = isHandshake ? SealUnderServerKey(plain) : sessionKey.Encipher(plain);
  String body;
  if (sealed.IsEmpty() || !sealed.EncodeBase64(body)) return String();
  return body;
}

bool AuthSession::OpenMessage(const String& body, NameValueList& fields) {
  ByteBuffer sealed;
  if (!sealed.DecodeBase64(body)) return false;
  ByteBuffer message = sessionKey.DecipherWithPadding(sealed);
  if (message.IsEmpty()) return false;
  std::uint32_t length = 0;
  std::uint8_t* bytes = message.TakeBuffer(message.Length());
  const bool isWhole = CheckMessage(bytes, message.Length(), &length);
  message.ReturnBuffer();
  if (!isWhole) return false;
  const String text(reinterpret_cast<const char*>(bytes) + digestTextLength, length);
  TextReader reader(text);
  return ReadHeaderBlock(reader, fields) && AcceptChallenges(fields);
}

bool AuthSession::AcceptChallenges(const NameValueList& fields) {
  const String replyServerRac = fields.Get(serverRacName);
  if (!serverRac.IsEmpty() && !EqualSecrets(serverRac, replyServerRac)) return false;
  if (!EqualSecrets(clientRac, fields.Get(clientRacName))) return false;
  serverRac = replyServerRac;
  return true;
}

}  // namespace kest
