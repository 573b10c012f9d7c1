// What each algorithm leaves on the stack when it returns: nothing that follows from a secret. The stack is wiped after
// every call of a host besides; here each part is looked at by itself.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "core/memory.h"
#include "crypto/message_digest.h"
#include "crypto/random_generator.h"
#include "crypto/rc5.h"
#include "crypto/rsa_public_cipher.h"
#include "crypto/sha1.h"
#include "secrets/derived_secrets.h"
#include "secrets/scenarios.h"
#include "secrets/stack_paint.h"
#include "support/memory_registry.h"
#include "support/public_key.h"
#include "support/toolkit.h"
#include "transport/body_source.h"
#include "transport/message_check.h"
#include "transport/reply_body.h"

namespace kest::testing {
namespace {

constexpr std::size_t searched = 43 * 1024;  // bytes of stack
constexpr std::size_t depth = 2048;          // bytes between the test's frame and what it looks at

// Runs the work below room that the test's own next calls may use, and copies what it leaves.
template <typename Work>
[[gnu::noinline]] void RunBelow(Work& work) {
  volatile char room[depth];
  room[0] = room[depth - 1] = 0;
  work();
  room[1] = room[0];
}

// Reads what lies below its caller's frame, which no name is left for.
[[gnu::noinline]] void CopyStack(std::vector<unsigned char>& copy) {
  const auto* frame = static_cast<const volatile unsigned char*>(__builtin_frame_address(0));
  const auto* deepest = frame - searched;
  for (std::size_t i = 0; i < copy.size(); ++i) copy[i] = deepest[i];
}

class StackAfter : public ::testing::Test {
 protected:
  // What `work` leaves on the stack.
  template <typename Work>
  std::string Left(Work work) {
    secrets.Index();
    std::vector<unsigned char> copy(searched);
    WipeStack();
    RunBelow(work);
    CopyStack(copy);
    return secrets.Find({{copy.data(), copy.size(), "stack"}});
  }
  static std::string Text(const Bytes& bytes) { return std::string(bytes.begin(), bytes.end()); }

  SecretWindows secrets;
};

[[gnu::noinline]] void LeaveCopy(const Bytes& secret) {
  volatile std::uint8_t copy[128];
  for (std::size_t i = 0; i < sizeof copy; ++i) copy[i] = secret[i];
}

TEST_F(StackAfter, ACopyThatIsNotWipedIsFound) {
  const Bytes secret = SomeBytes(128);
  secrets.Add("copy", Text(secret));
  EXPECT_EQ(0u, Left([&] { LeaveCopy(secret); }).find("copy from "));
}

TEST_F(StackAfter, KeyExpansionLeavesNoWords) {
  const Bytes key = SomeBytes(128);
  secrets.Add("key", Text(key));
  AddKeyWords(secrets, Text(key));
  Rc5Key table;
  EXPECT_EQ("", Left([&] { Rc5ExpandKey(table, 20, key.data(), 128); }));
}

TEST_F(StackAfter, Sha1LeavesNoScheduleAndNoChainingValue) {
  const Bytes text = SomeBytes(200);
  secrets.Add("text", Text(text));
  AddSha1(secrets, Text(text));
  Sha1Context context;
  std::uint8_t digest[sha1Length];
  EXPECT_EQ("", Left([&] {
    Sha1Init(context);
    Sha1Update(context, text.data(), 200);
    Sha1Final(context, digest);
  }));
  EXPECT_EQ("", Left([&] { Sha1OfHiddenLength(text.data(), 200, 200, digest); }));
}

TEST_F(StackAfter, DigestOfATextIsGone) {
  const String text("a text that nobody but the two ends may see, and which fills more than one block of the digest");
  secrets.Add("text", text.Characters(), text.Length());
  AddSha1(secrets, std::string(text.Characters(), text.Length() + 1));
  ByteBuffer digest;
  EXPECT_EQ("", Left([&] { digest = DigestText(text, sha1Descriptor); }));
  EXPECT_EQ(20u, digest.Length());
}

TEST_F(StackAfter, GeneratorLeavesNoSeedAndNoState) {
  const std::string seed = Text(SomeBytes(128));
  Bytes wiped(seed.begin(), seed.end());
  AddGenerator(secrets, seed, 136);
  std::uint8_t drawn[136];
  EXPECT_EQ("", Left([&] {
    RandomGenerator generator;
    generator.SeedFromBytes(wiped.data(), 128);
    generator.GenerateBytes(drawn, sizeof drawn);
  }));
}

TEST_F(StackAfter, EntropyIsGone) {
  KnownEntropy entropy(99);
  std::string screen;
  entropy.onDrawn = [&](bool isScreen, const void* bytes, std::uint32_t length) {
    const std::string drawn(static_cast<const char*>(bytes), length);
    if (isScreen) screen = drawn;
    if (!isScreen) AddGenerator(secrets, AddEntropy(secrets, screen, drawn, 48), 48);
  };
  const SystemInForce inForce(entropy);
  RandomGenerator first, second;
  // Once to learn the secrets, and once in the same world to look at what is left of them.
  ASSERT_TRUE(first.SeedFromEntropy(48));
  KnownEntropy same(99);
  const SystemInForce sameInForce(same);
  EXPECT_EQ("", Left([&] { second.SeedFromEntropy(48); }));
}

TEST_F(StackAfter, RsaLeavesNoBlockAndNoPower) {
  Bytes modulus(128, 0x5A);
  modulus.front() = 0xC1;
  modulus.back() = 0x0F;
  const Bytes der = PublicKey(modulus, {1, 0, 1});
  RsaPublicCipher cipher;
  ASSERT_TRUE(cipher.LoadPublicKey(ByteBuffer(der.data(), static_cast<std::uint32_t>(der.size()))));
  std::uint8_t out[128];
  for (std::uint32_t seed = 1; seed < 9; ++seed) {
    Bytes block = SomeBytes(128, seed);
    block.front() = 0;
    secrets = SecretWindows();
    secrets.Add("block", Text(block));
    AddRsaBlocks(secrets, Text(block));
    ASSERT_TRUE(cipher.BeginEncipher());
    EXPECT_EQ("", Left([&] { cipher.EncipherUpdate(block.data(), 128, out, 128); })) << seed;
  }
}

TEST_F(StackAfter, CheckOfAMessageLeavesNothingOfIt) {
  Bytes message = SomeBytes(200, 5);
  for (std::uint8_t& byte : message) byte = static_cast<std::uint8_t>(byte | 1);
  std::string text = Text(message).substr(28, 200 - 28 - 1);
  secrets.Add("message", Text(message));
  AddSha1(secrets, text + '\0');
  std::uint32_t length = 0;
  EXPECT_EQ("", Left([&] { CheckMessage(message.data(), 200, &length); }));
  EXPECT_EQ(text.size(), length) << "the digest was that of this text";
}

// A connection that takes everything and answers a body.
class Network : public ForwardingSystem {
 public:
  explicit Network(const Bytes& answered) : answer(answered) {}
  int send(os::Socket, const void*, int length, int) override { return length; }
  int recv(os::Socket, void* bytes, int capacity, int) override {
    std::memcpy(bytes, answer.data(), answer.size());
    return std::min(capacity, static_cast<int>(answer.size()));
  }

 private:
  const Bytes& answer;
};

TEST_F(StackAfter, BodiesThatAreSentAndReadAreGone) {
  const Bytes body = SomeBytes(300);
  const String text(reinterpret_cast<const char*>(body.data()), 300);
  secrets.Add("body", Text(body));
  Network network(body);
  const SystemInForce inForce(network);
  EXPECT_EQ("", Left([&] {
    SocketConnection connection;
    TextSource source(text);
    SendBody(source, connection);
  }));
  HttpReply reply;
  reply.headers.Add("Content-Length", "300");
  EXPECT_EQ("", Left([&] {
    SocketConnection connection;
    ConnectionReader reader(connection);
    ReadBody(reader, reply);
  }));
  EXPECT_EQ("", Left([&] {
    SocketConnection connection;
    ConnectionReader reader(connection);
    SkipBody(reader, reply);
  }));
}

// A world without a server. The keys are made all the same, which goes deepest.
class NoServer : public KnownEntropy {
 public:
  NoServer() : KnownEntropy(7) {}

  int refused = 0;

  os::Socket socket(int, int, int) override { return 5; }
  int connect(os::Socket, const os::SocketAddress*, int) override {
    ++refused;
    return -1;
  }
  int setsockopt(os::Socket, int, int, const void*, int) override { return 0; }
  int closesocket(os::Socket) override { return 0; }
  const os::HostEntry* gethostbyname(const char*) override {
    static char address[] = {10, 0, 0, 1};
    static char* addresses[] = {address, nullptr};
    static const os::HostEntry entry = {nullptr, nullptr, os::addressFamilyInet, 4, addresses};
    return &entry;
  }
};

class StackBelowACall : public ::testing::TestWithParam<Call> {
 protected:
  StackBelowACall() { ConfigureServer(usualExponent); }
  ~StackBelowACall() override { KestSetServer("", 0, ""); }

  NoServer world;
  MemoryRegistry registry{world};
  SystemInForce inForce{registry};
};

TEST_P(StackBelowACall, IsZeroAsDeepAsWipingReaches) {
  HostCall call(GetParam());
  PaintStack();
  WipeStack();
  const std::size_t wiped = StackUsed();
  PaintStack();
  const bool isDone = call.Run();
  const std::size_t used = StackUsed();
  const std::size_t notZero = StackNotZero(depth, wiped - depth);
  EXPECT_FALSE(isDone);
  EXPECT_EQ(1, world.refused);
  EXPECT_GE(used, wiped) << "the call's own frame lies above";
  EXPECT_LT(used, wiped + depth);
  EXPECT_EQ(0u, notZero);
}

constexpr const char* callNames[] = {"Products", "Sale", "Bill"};
INSTANTIATE_TEST_SUITE_P(Calls, StackBelowACall, ::testing::Values(Call::products, Call::sale, Call::bill),
                         [](const auto& parameter) { return std::string(callNames[parameter.index]); });

}  // namespace
}  // namespace kest::testing
