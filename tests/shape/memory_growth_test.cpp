// How much memory does a byte from the server cost? For each kind of thing that a server can send more and more of, the
// most that a call holds at one time is in proportion to the bytes received, and so is what it allocates in all, which
// bounds what it copies. The factors are those of 64-bit systems, where pointers and locks are largest; docs/security.md
// promises them.
#include <cstdio>
#include <fstream>
#include <sstream>

#include "shape/hostile_fixture.h"

namespace kest::testing {
namespace {

// A kind of thing; bytes of memory for each byte received, held at one time and allocated in all; how the call ends.
struct Kind {
  const char* name;
  double held;
  double allocated;
  std::int32_t code;
  // The replies of a call that takes about so many bytes.
  std::function<std::vector<std::string>(const std::vector<std::string>& honest, SealedServer&, std::size_t bytes)>
      make;
};

std::string Repeated(const std::string& text, std::size_t bytes) {
  std::string all;
  while (all.size() < bytes) all += text;
  return all;
}

Kind InHead(const char* name, double held, double allocated, const std::string& text,
            const std::string& before = "HTTP/1.0 200 OK\r\n") {
  return {name, held, allocated, KEST_ERROR_EXCHANGE,
          [=](const auto&, auto&, std::size_t bytes) -> std::vector<std::string> {
            return {before + Repeated(text, bytes)};
          }};
}

Kind InBody(const char* name, double held, double allocated, const std::string& text) {
  return {name, held, allocated, KEST_ERROR_EXCHANGE,
          [=](const auto& honest, auto&, std::size_t bytes) -> std::vector<std::string> {
            return {honest[0], SealedServer::Http(Repeated(text, bytes))};
          }};
}

// A valid sealed reply; a byte of its text is 4/3 bytes on the way.
Kind Sealed(const char* name, double held, double allocated, const std::string& begin, const std::string& text) {
  return {name, held, allocated, KEST_ERROR_NONE,
          [=](const auto& honest, auto& server, std::size_t bytes) -> std::vector<std::string> {
            std::string whole = SealedServer::TextOf(HonestFields(server));
            whole = whole.substr(0, whole.size() - 2) + begin + Repeated(text, bytes * 3 / 4) + "\r\n\r\n";
            return {honest[0], server.Seal(SealedServer::DigestOf(whole) + whole + '\0')};
          }};
}

std::vector<Kind> Kinds() {
  return {
      InHead("head lines of one character", 110, 128, "a\n"),
      InHead("head lines without a name", 50, 68, ":\n"),
      InHead("head lines", 56, 64, "a: b\r\n"),
      InHead("one head line", 4, 7, "x"),
      InHead("one status line", 4, 7, "x", "HTTP/1.0 200 "),
      InHead("one folded line", 6, 8, "\n ", "HTTP/1.0 200 OK\r\na:b"),
      InHead("a location", 2, 12, "x", "HTTP/1.0 302 Found\r\nLocation: /"),
      InHead("a location of steps upwards", 2, 12, "../a/", "HTTP/1.0 302 Found\r\nLocation: /"),
      InBody("a body", 3, 6, "AAAA"),
      InBody("a body of white space", 3, 6, "\r\n"),
      Sealed("sealed lines of one character", 72, 80, "", "a\n"),
      Sealed("one sealed line", 6, 10, "a: ", "x"),
      Sealed("product records", 20, 28, "", "KEST-Product:\n"),
      Sealed("product records of one pair", 80, 88, "", "KEST-Product:a:b\n"),
      Sealed("pairs of one product record", 40, 48, "KEST-Product:", "a:^"),
      Sealed("empty pairs of one product record", 14, 22, "KEST-Product:", ":^"),
  };
}

struct Cost {
  std::size_t received, held, allocated;  // bytes
  std::int32_t code;
};

class MemoryGrowth : public HostileTest {
 protected:
  Cost Measure(const std::vector<std::string>& replies) {
    sockets.peers.clear();
    for (const std::string& reply : replies) sockets.peers.push_back({reply});
    const std::size_t before = memory.Live();
    const std::int32_t code = Fetch();
    return {sockets.Received(), memory.Peak() - before, memory.Allocated(), code};
  }
};

TEST_F(MemoryGrowth, IsInProportionToTheBytesReceived) {
  const Cost least = Measure(honest);
  for (const Kind& kind : Kinds()) {
    // Right behind the places where what doubles when it is full has just done so: it is largest there.
    for (const std::size_t bytes : {33000u, 66000u, 132000u}) {
      SCOPED_TRACE(kind.name + std::string(", ") + std::to_string(bytes));
      const Cost cost = Measure(kind.make(honest, server, bytes));
      ASSERT_GE(cost.received, bytes);
      EXPECT_EQ(kind.code, cost.code);
      const double held = static_cast<double>(cost.held - least.held) / static_cast<double>(cost.received);
      const double allocated = static_cast<double>(cost.allocated) / static_cast<double>(cost.received);
      std::printf("%-34s %7zu bytes: %6.1f held, %6.1f allocated\n", kind.name, cost.received, held, allocated);
      EXPECT_LE(held, kind.held);
      EXPECT_LE(allocated, kind.allocated);
    }
  }
}

// Rows: | name | held, measured | bound | allocated, measured | bound |
TEST(MemoryGrowthPage, StatesTheBoundsOfEveryKind) {
  std::ifstream file(KEST_SECURITY_PAGE);
  std::stringstream page;
  page << file.rdbuf();
  for (const Kind& kind : Kinds()) {
    const std::string begin = std::string("\n| ") + kind.name + " | ";
    const std::size_t at = page.str().find(begin);
    ASSERT_NE(std::string::npos, at) << kind.name;
    std::istringstream row(page.str().substr(at + begin.size()));
    double held = 0, heldBound = 0, allocated = 0, allocatedBound = 0;
    char bar = 0;
    row >> held >> bar >> heldBound >> bar >> allocated >> bar >> allocatedBound;
    EXPECT_TRUE(row) << kind.name;
    EXPECT_EQ(kind.held, heldBound) << kind.name;
    EXPECT_EQ(kind.allocated, allocatedBound) << kind.name;
    EXPECT_LE(held, heldBound) << kind.name;
    EXPECT_LE(allocated, allocatedBound) << kind.name;
  }
}

}  // namespace
}  // namespace kest::testing
