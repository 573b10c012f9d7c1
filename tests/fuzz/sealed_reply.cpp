// A reply to a sealed message: it is opened exactly when its digest and both challenges hold, and then says what its
// text says. The input's first line says what the rest is: "body" the body as it arrives, "plain" what the server
// enciphered, "text" the same with the right digest in front. "$C" stands for the client's challenge.
#include <optional>

#include "crypto/message_digest.h"
#include "fuzz/target.h"
#include "support/allocation_system.h"
#include "support/rc5_message.h"
#include "transport/auth_session.h"
#include "transport/header_block.h"

namespace kest::testing {
namespace {

constexpr std::size_t digestLength = 28;  // characters

std::string ToBase64(const std::string& bytes) {
  String text;
  ByteBuffer(bytes.data(), static_cast<std::uint32_t>(bytes.size())).EncodeBase64(text);
  return Plain(text);
}

std::optional<std::string> FromBase64(const std::string& text) {
  ByteBuffer bytes;
  if (!bytes.DecodeBase64(Kest(text))) return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes.Bytes()), bytes.Length());
}

std::string DigestOf(const std::string& text) {
  String encoded;
  DigestText(Kest(text), sha1Descriptor).EncodeBase64(encoded);
  return Plain(encoded);
}

std::string Replaced(std::string text, const std::string& mark, const std::string& by) {
  for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; at += by.size()) {
    text.replace(at, mark.size(), by);
  }
  return text;
}

// What the server knows of a session.
struct Peer {
  std::string key, challenge;

  explicit Peer(AuthSession& session) {
    key = FromBase64(Plain(session.ExportedKey())).value();
    NameValueList fields;
    HOLD(!session.SealMessage(fields, false).IsEmpty());
    challenge = Plain(fields.Get("KEST-Auth-Client-RAC"));
    HOLD(key.size() == 136 && challenge.size() == 64);
  }
};

std::string BodyFrom(Input input, const Peer& peer) {
  const std::string kind = input.Line(), rest = Replaced(input.Rest(), "$C", peer.challenge);
  if (kind == "plain") return ToBase64(EncipherRc5(peer.key, rest));
  if (kind == "text") return ToBase64(EncipherRc5(peer.key, DigestOf(rest.c_str()) + rest));
  return rest;
}

// The fields of a body whose digest and client's challenge hold.
std::optional<Pairs> Expected(const Peer& peer, const std::string& body) {
  const std::optional<std::string> sealed = FromBase64(body);
  if (!sealed) return std::nullopt;
  const std::string message = DecipherRc5(peer.key, *sealed).c_str();
  if (message.size() < digestLength) return std::nullopt;
  const std::string text = message.substr(digestLength);
  if (DigestOf(text) != message.substr(0, digestLength)) return std::nullopt;
  TextReader reader(Kest(text));
  NameValueList fields;
  if (!ReadHeaderBlock(reader, fields)) return std::nullopt;
  if (Plain(fields.Get("KEST-Auth-Client-RAC")) != peer.challenge) return std::nullopt;
  return PairsOf(fields);
}

std::string Value(const Pairs& pairs, const char* name) {
  for (const auto& pair : pairs) {
    if (Kest(pair.first).EqualsIgnoringCase(name)) return pair.second;
  }
  return "";
}

// Opened once, and again: the server's challenge is what the first reply said, if it said one.
void HoldOpened(AuthSession& session, const Peer& peer, const std::string& body) {
  const std::optional<Pairs> expected = Expected(peer, body);
  for (int i = 0; i < 2; ++i) {
    NameValueList fields;
    HOLD(session.OpenMessage(Kest(body), fields) == expected.has_value());
    if (expected) HOLD(PairsOf(fields) == *expected);
  }
  const std::string other = "KEST-Auth-Client-RAC: " + peer.challenge + "\r\nKEST-Auth-Server-RAC: another one\r\n\r\n";
  const bool isOpen = !expected || Value(*expected, "KEST-Auth-Server-RAC").empty() ||
                      Value(*expected, "KEST-Auth-Server-RAC") == "another one";
  NameValueList fields;
  HOLD(session.OpenMessage(Kest(ToBase64(EncipherRc5(peer.key, DigestOf(other) + other))), fields) == isOpen);
}

void Check(const Input& input) {
  AllocationSystem memory;
  {
    const SystemInForce inForce(memory);
    AuthSession session;
    HOLD(session.Begin());
    const Peer peer(session);
    HoldOpened(session, peer, BodyFrom(input, peer));
  }
  HOLD(memory.Outstanding() == 0);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
