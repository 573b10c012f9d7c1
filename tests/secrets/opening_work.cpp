// What opening a reply costs for replies of one length that are wrong in different ways, and what a comparison costs:
// callgrind counts each and writes it down under a name. equal_work_test.py runs this and compares.
#include <valgrind/callgrind.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "crypto/constant_time.h"
#include "support/rc5_message.h"
#include "support/sealed_server.h"
#include "transport/auth_session.h"
#include "transport/server_settings.h"

namespace kest {
namespace {

using testing::Fields;
using testing::ForwardingSystem;
using testing::SealedServer;
using testing::SystemInForce;

// Memory that lies in the same places in every turn, so that the heap's history does not count.
class Arena : public ForwardingSystem {
 public:
  void Reset() { used = 0; }
  void* GlobalAlloc(std::uint32_t, std::size_t bytes) override {
    void* block = memory.data() + used;
    used += (bytes + 63) / 64 * 64;
    return used <= memory.size() ? block : nullptr;
  }
  void GlobalFree(void*) override {}

 private:
  std::vector<char> memory = std::vector<char>(1 << 20);
  std::size_t used = 0;
};

template <typename Work>
void Count(const std::string& name, Work work) {
  // What runs for the first time also looks up its functions.
  for (int turn = 0; turn < 2; ++turn) {
    CALLGRIND_ZERO_STATS;
    work();
  }
  CALLGRIND_DUMP_STATS_AT(name.c_str());
}

class Replies {
 public:
  Replies() {
    SetServer("shop.example", 80, SealedServer::KeyText().c_str());
    NameValueList fields;
    if (!session.Begin()) std::abort();
    session.SealMessage(fields, false);
    clientRac = fields.Get("KEST-Auth-Client-RAC").Text();
    ByteBuffer key;
    key.DecodeBase64(session.ExportedKey());
    exportedKey.assign(reinterpret_cast<const char*>(key.Bytes()), key.Length());
    if (!Open(Sealed(Message(clientRac, serverRac)))) std::abort();
  }

  // A message whose blocks are `message` as it is, its padding included.
  String Sealed(const std::string& message) const {
    const std::string cipher = testing::EncipherRc5(exportedKey, message);
    String text;
    ByteBuffer(cipher.data(), static_cast<std::uint32_t>(message.size())).EncodeBase64(text);
    return text;
  }
  // A whole message with so many bytes of padding; always as many blocks.
  std::string Message(const std::string& client, const std::string& server, std::uint32_t padding = 4) const {
    Fields fields = {{"KEST-Auth-Client-RAC", client}, {"KEST-Auth-Server-RAC", server}, {"Filler", ""}};
    const std::size_t length = 28 + SealedServer::TextOf(fields).size() + 1;
    fields.back().second.assign(400 - padding - length, 'f');
    const std::string text = SealedServer::TextOf(fields);
    return SealedServer::DigestOf(text) + text + '\0' + std::string(padding, static_cast<char>(padding));
  }
  bool Open(const String& body) {
    NameValueList fields;
    return session.OpenMessage(body, fields);
  }
  // Not inlined, so that every way is counted by the same code.
  [[gnu::noinline]] void CountRefusal(const std::string& name, const std::string& message) {
    const String body = Sealed(message);
    Count(name, [&] {
      arena.Reset();
      const SystemInForce inForce(arena);
      if (Open(body)) std::printf("%s was accepted\n", name.c_str());
    });
  }

  std::string clientRac;
  const std::string serverRac = "the server's challenge";

 private:
  Arena arena;
  AuthSession session;
  std::string exportedKey;
};

std::string Changed(std::string text, std::size_t at, char change = '\x20') {
  text[at] = static_cast<char>(text[at] ^ change);
  return text;
}

void CountBadMessages(Replies& replies) {
  const std::string good = replies.Message(replies.clientRac, replies.serverRac);
  for (const int last : {0, 9, 255}) {
    std::string bad = good;
    bad.back() = static_cast<char>(last);
    replies.CountRefusal("message: last byte of the padding " + std::to_string(last), bad);
  }
  const std::string whole = replies.Message(replies.clientRac, replies.serverRac, 8);
  for (std::size_t at = 0; at < 8; ++at) {
    replies.CountRefusal("message: padding byte " + std::to_string(at), Changed(whole, 400 - 8 + at));
  }
  for (std::uint32_t padding = 1; padding <= 8; ++padding) {
    const std::string other = replies.Message(replies.clientRac, replies.serverRac, padding);
    replies.CountRefusal("message: digest beside padding " + std::to_string(padding), Changed(other, 5));
  }
  for (const std::size_t at : {0, 1, 13, 26, 27}) {
    replies.CountRefusal("message: digest character " + std::to_string(at), Changed(good, at));
  }
  for (const std::size_t at : {0, 27, 28, 29, 150, 300, 394}) {
    std::string cut = good;
    cut[at] = '\0';
    replies.CountRefusal("message: zero byte at " + std::to_string(at), cut);
  }
  replies.CountRefusal("message: nothing but zero bytes", std::string(400, '\0'));
  replies.CountRefusal("message: no zero byte and no padding", std::string(400, 'x'));
}

void CountWrongChallenges(Replies& replies) {
  for (const std::size_t at : {0, 1, 32, 63}) {
    replies.CountRefusal("client challenge: character " + std::to_string(at),
                         replies.Message(Changed(replies.clientRac, at, '\x01'), replies.serverRac));
  }
  for (const std::size_t at : {0, 1, 10, 21}) {
    replies.CountRefusal("server challenge: character " + std::to_string(at),
                         replies.Message(replies.clientRac, Changed(replies.serverRac, at)));
  }
}

void CountComparisons() {
  const std::vector<char> a(64, 'a');
  for (std::size_t at = 0; at <= 64; ++at) {
    std::vector<char> b = a;
    if (at < 64) b[at] = 'b';
    volatile bool isEqual = false;
    Count("comparison: byte " + std::to_string(at), [&] { isEqual = EqualBytes(a.data(), b.data(), 64); });
    if (isEqual != (at == 64)) std::printf("comparison %zu is wrong\n", at);
  }
}

// What must be seen to differ, or no count means anything.
[[gnu::noinline]] bool EqualUpToTheFirstDifference(const volatile char* a, const volatile char* b, std::size_t length) {
  for (std::size_t i = 0; i < length; ++i) {
    if (a[i] != b[i]) return false;
  }
  return true;
}

void CountHastyComparisons() {
  const std::vector<char> a(64, 'a');
  for (const std::size_t at : {3, 4, 60}) {
    std::vector<char> b = a;
    b[at] = 'b';
    volatile bool isEqual = false;
    Count("hasty comparison: byte " + std::to_string(at),
          [&] { isEqual = EqualUpToTheFirstDifference(a.data(), b.data(), 64); });
  }
}

}  // namespace
}  // namespace kest

int main() {
  kest::Replies replies;
  kest::CountBadMessages(replies);
  kest::CountWrongChallenges(replies);
  kest::CountComparisons();
  kest::CountHastyComparisons();
  return 0;
}
