// What is left in the memory of the host's process after a call: no key, challenge, seed, text or part of one. The calls
// are those that secret_recorder ran and wrote down; all memory that this process can write is searched for any 16
// bytes of their secrets.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>

#include "api/export_support.h"
#include "core/memory.h"
#include "secrets/scenarios.h"
#include "secrets/secret_windows.h"
#include "secrets/stack_paint.h"
#include "support/redirected_registry.h"
#include "transport/transport_request.h"

namespace kest::testing {
namespace {

// What the host holds: the fields of its request, and those of a reply that came through.
constexpr char heldAfterFailure[] = "held: request";
constexpr char heldAfterSuccess[] = "held: ";

// The world of a scenario, with a server that answers what it answered before, and memory that may end and whose blocks
// are searched when they are freed, before anything else can be written there.
class ReplayedWorld : public KnownEntropy {
 public:
  ReplayedWorld(std::uint64_t seed, const Scenario& replayed, const SecretWindows& looked,
                os::System& memory = os::Native())
      : KnownEntropy(seed, memory), scenario(replayed), secrets(looked) {}

  void Read(std::istream& file) {
    std::size_t count = 0;
    file >> count;
    replies.resize(count);
    for (std::string& reply : replies) {
      file >> count;
      reply.resize(count);
      file.get();
      file.read(&reply[0], static_cast<std::streamsize>(count));
    }
  }

  // Called when the request is about to be sent.
  std::function<void()> whileSending;
  std::uint64_t failAt = 0;  // which allocation; 0: none
  std::uint64_t allocations = 0;

  std::string inFreedBlocks;  // what was found there

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    if (++allocations == failAt) return nullptr;
    void* block = KnownEntropy::GlobalAlloc(flags, bytes);
    sizes[block] = bytes;
    return block;
  }
  void GlobalFree(void* block) override {
    const auto size = sizes.find(block);
    if (size != sizes.end()) {
      inFreedBlocks += secrets.Find({{static_cast<unsigned char*>(block), size->second, "a freed block"}});
      sizes.erase(size);
    }
    KnownEntropy::GlobalFree(block);
  }
  os::Socket socket(int, int, int) override {
    position = 0;
    isSent = false;
    return ++connection;
  }
  int connect(os::Socket, const os::SocketAddress*, int) override {
    return scenario.fault == Fault::refused && scenario.exchange == static_cast<int>(connection) ? -1 : 0;
  }
  int send(os::Socket, const void*, int length, int) override {
    if (connection == 2 && !isSent && whileSending) whileSending();
    isSent = true;
    return length;
  }
  int recv(os::Socket, void* bytes, int capacity, int) override {
    const std::string& reply = replies.at(connection - 1);
    const std::size_t count = std::min(static_cast<std::size_t>(capacity), reply.size() - position);
    Unmask(bytes, position, count);
    position += count;
    return static_cast<int>(count);
  }
  // Writes bytes of the reply to the connection's request.
  void Unmask(void* bytes, std::size_t from, std::size_t count) const {
    auto* target = static_cast<volatile char*>(bytes);
    for (std::size_t i = 0; i < count; ++i) target[i] = Masked(replies.at(connection - 1)[from + i], from + i);
  }
  int setsockopt(os::Socket, int, int, const void*, int) override { return 0; }
  int closesocket(os::Socket) override { return 0; }
  const os::HostEntry* gethostbyname(const char*) override {
    static char address[] = {10, 0, 0, 1};
    static char* addresses[] = {address, nullptr};
    static const os::HostEntry entry = {nullptr, nullptr, os::addressFamilyInet, 4, addresses};
    return &entry;
  }

 private:
  const Scenario& scenario;
  const SecretWindows& secrets;
  std::map<void*, std::size_t> sizes;
  std::vector<std::string> replies;  // masked
  std::size_t position = 0;
  os::Socket connection = 0;
  bool isSent = false;
};

class MemoryAfter : public ::testing::TestWithParam<std::size_t> {
 protected:
  MemoryAfter() {
    std::ifstream file(SecretsFile(scenario), std::ios::binary);
    EXPECT_TRUE(file) << SecretsFile(scenario) << " is missing; run secret_recorder (ctest does)";
    world.Read(file);
    secrets.Read(file);
    ConfigureServer(usualExponent);
    ConfigureProxy(scenario);
  }
  ~MemoryAfter() override {
    KestSetServer("", 0, "");
    KestSetProxy("", 0);
  }

  bool IsMeantToSucceed() const { return scenario.fault == Fault::none; }

  const Scenario& scenario = Scenarios().at(GetParam());
  SecretWindows secrets;
  ReplayedWorld world{GetParam() + 1, scenario, secrets};
  RedirectedRegistry registry{world};
  SystemInForce inForce{registry};
};

TEST_P(MemoryAfter, HoldsNoSecret) {
  ASSERT_EQ("", secrets.FindAnywhere()) << "before the call";
  {
    HostCall call(scenario.call);
    EXPECT_EQ(IsMeantToSucceed(), call.Run());
    EXPECT_EQ("", secrets.FindAnywhere(IsMeantToSucceed() ? heldAfterSuccess : heldAfterFailure))
        << "beside the fields of what the host holds";
  }
  EXPECT_EQ("", secrets.FindAnywhere()) << "when the host has let go of everything";
  EXPECT_EQ("", world.inFreedBlocks);
}

INSTANTIATE_TEST_SUITE_P(Calls, MemoryAfter, ::testing::Range<std::size_t>(0, Scenarios().size()),
                         [](const auto& parameter) { return std::string(Scenarios().at(parameter.param).name); });

// Whole calls, directly, redirected and through a proxy, of which one allocation after the other fails.
using MemoryWithoutRoom = MemoryAfter;

TEST_P(MemoryWithoutRoom, HoldsNoSecretWhereverTheCallEnds) {
  std::uint64_t ended = 0;
  for (std::uint64_t point = 1;; point += KEST_ALLOCATION_STRIDE) {
    ReplayedWorld ending(GetParam() + 1, scenario, secrets);
    std::ifstream file(SecretsFile(scenario), std::ios::binary);
    ending.Read(file);
    RedirectedRegistry kept(ending);
    const SystemInForce endingInForce(kept);
    {
      HostCall call(scenario.call);
      ending.allocations = 0;
      ending.failAt = point;
      call.Run();
      ending.failAt = 0;
    }
    EXPECT_EQ("", secrets.FindAnywhere()) << "no room for allocation " << point;
    EXPECT_EQ("", ending.inFreedBlocks) << "no room for allocation " << point;
    if (ending.allocations < point) break;
    ++ended;
  }
  EXPECT_GT(ended, 150u / KEST_ALLOCATION_STRIDE);
}

INSTANTIATE_TEST_SUITE_P(Calls, MemoryWithoutRoom, ::testing::Values(0, 1, 2, 28, 30),
                         [](const auto& parameter) { return std::string(Scenarios().at(parameter.param).name); });

// That the search finds what is there.
using MemorySearch = MemoryAfter;

TEST_P(MemorySearch, FindsTheSecretsOfACallUnderWay) {
  std::string found;
  world.whileSending = [&] { found = secrets.FindAnywhere(); };
  HostCall(scenario.call).Run();
  for (const char* name : {"session key", "held: reply: client challenge", "held: reply: server challenge",
                           "sealed request in base64"}) {
    EXPECT_NE(std::string::npos, found.find(std::string(name) + " from ")) << name << "\n" << found;
  }
}

// Not much less either: a host may call on a thread with a small stack.
TEST_P(MemorySearch, AnExchangeUsesLittleLessStackThanIsWiped) {
  auto* list = KestCreateProductList();
  KestSetField(KEST_FIELDS(list), "GUID", "guid");
  PaintStack();
  // Without the wiping, which the exported functions do.
  const std::unique_ptr<FieldSet> reply(TransportRequest(0, "GetProductList", *FromHandle(list)));
  const std::size_t used = StackUsed();
  PaintStack();
  WipeStack();
  const std::size_t wiped = StackUsed();
  std::printf("an exchange uses %zu bytes of stack, wiping %zu\n", used, wiped);
  EXPECT_NE(nullptr, reply);
  EXPECT_GT(used, 38400u) << "the capture of the screen alone";
  EXPECT_GT(wiped, used + 2 * 1024);
  EXPECT_LT(wiped, used + 6 * 1024);
  KestDestroyProductList(list);
}

unsigned char staticCopy[SecretWindows::windowLength];

TEST_P(MemorySearch, FindsSixteenBytesWhereverTheyLie) {
  // Of the sealed reply, which is the one secret that the test can make.
  unsigned char stackCopy[SecretWindows::windowLength + 1];
  auto* heapCopy = static_cast<unsigned char*>(Allocate(1000));
  world.socket(0, 0, 0);
  for (unsigned char* copy : {staticCopy, stackCopy + 1, heapCopy + 333}) {
    world.Unmask(copy, 200, SecretWindows::windowLength);
    EXPECT_EQ(0u, secrets.FindAnywhere().find("sealed reply in base64 from "));
    Wipe(copy, SecretWindows::windowLength);
    EXPECT_EQ("", secrets.FindAnywhere());
  }
  Release(heapCopy);
}

// One block, which is gone when it has been freed: what is found was found before.
class WipedBlock : public ForwardingSystem {
 public:
  void* GlobalAlloc(std::uint32_t, std::size_t) override { return block; }
  void GlobalFree(void*) override { Wipe(block, sizeof block); }

 private:
  unsigned char block[1000] = {};
};

TEST_P(MemorySearch, FindsSixteenBytesInABlockThatIsFreed) {
  WipedBlock memory;
  ReplayedWorld planted(GetParam() + 1, scenario, secrets, memory);
  std::ifstream file(SecretsFile(scenario), std::ios::binary);
  planted.Read(file);
  planted.socket(0, 0, 0);
  for (const std::size_t at : {0, 333, 1000 - int{SecretWindows::windowLength}}) {
    auto* block = static_cast<unsigned char*>(planted.GlobalAlloc(0, 1000));
    planted.inFreedBlocks.clear();
    planted.Unmask(block + at, 200, SecretWindows::windowLength);
    planted.GlobalFree(block);
    EXPECT_EQ(0u, planted.inFreedBlocks.find("sealed reply in base64 from ")) << at;
  }
  EXPECT_EQ("", secrets.FindAnywhere());
}

INSTANTIATE_TEST_SUITE_P(Calls, MemorySearch, ::testing::Values(1),
                         [](const auto& parameter) { return std::string(Scenarios().at(parameter.param).name); });

}  // namespace
}  // namespace kest::testing
