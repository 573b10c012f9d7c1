// Does a body go to its connection whole, in pieces of 8,192 bytes, and again from its beginning?
#include "transport/body_source.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

class SendBodyTest : public TransportTest {
 protected:
  SendBodyTest() {
    sockets.conversations.resize(1);
    EXPECT_TRUE(connection.Connect("10.0.0.1", 80));
    sockets.log.clear();
  }

  SocketConnection connection;
};

// Hands out its results one by one; a negative one is an error, a count is so many bytes "x".
class CountedSource final : public BodySource {
 public:
  explicit CountedSource(std::vector<std::int32_t> results) : counts(std::move(results)) {}
  bool canBegin = true;
  std::vector<std::uint32_t> capacities;

  bool Begin() override { return canBegin; }
  std::int32_t Read(void* bytes, std::uint32_t capacity) override {
    capacities.push_back(capacity);
    const std::int32_t count = counts.at(capacities.size() - 1);
    if (count > 0) std::memset(bytes, 'x', static_cast<std::size_t>(count));
    return count;
  }

 private:
  std::vector<std::int32_t> counts;
};

TEST(TextSource, HandsOutItsTextThenZero) {
  TextSource source("hello");
  char bytes[4];
  EXPECT_EQ(source.Read(bytes, 4), 4);
  EXPECT_EQ(std::string(bytes, 4), "hell");
  EXPECT_EQ(source.Read(bytes, 4), 1);
  EXPECT_EQ(source.Read(bytes, 4), 0);
}

TEST(TextSource, BeginsAgain) {
  TextSource source("hello");
  char bytes[8];
  source.Read(bytes, 3);
  EXPECT_TRUE(source.Begin());
  EXPECT_EQ(source.Read(bytes, 8), 5);
  EXPECT_EQ(std::string(bytes, 5), "hello");
}

TEST(TextSource, EmptyTextIsAtItsEnd) {
  TextSource source{String()};
  char byte;
  EXPECT_EQ(source.Read(&byte, 1), 0);
}

TEST_F(SendBodyTest, GoesInPiecesOf8192Bytes) {
  const std::string text(20000, 'a');
  TextSource source(Kest(text));
  EXPECT_TRUE(SendBody(source, connection));
  EXPECT_THAT(sockets.log, ElementsAre("send 8192", "send 8192", "send 3616"));
  EXPECT_EQ(sockets.connections[0].sent, text);
}

TEST_F(SendBodyTest, BeginsAtTheBeginningEachTime) {
  TextSource source("abc");
  EXPECT_TRUE(SendBody(source, connection));
  EXPECT_TRUE(SendBody(source, connection));
  EXPECT_EQ(sockets.connections[0].sent, "abcabc");
}

TEST_F(SendBodyTest, EmptyBodySendsNothing) {
  TextSource source{String()};
  EXPECT_TRUE(SendBody(source, connection));
  EXPECT_THAT(sockets.log, IsEmpty());
}

TEST_F(SendBodyTest, ShortReadsOfTheSourceAreSentAsTheyCome) {
  CountedSource source({1, 8192, 2, 0});
  EXPECT_TRUE(SendBody(source, connection));
  EXPECT_THAT(sockets.log, ElementsAre("send 1", "send 8192", "send 2"));
  EXPECT_THAT(source.capacities, ElementsAre(8192u, 8192u, 8192u, 8192u));
}

TEST_F(SendBodyTest, NegativeReadFails) {
  CountedSource source({5, -1});
  EXPECT_FALSE(SendBody(source, connection));
  EXPECT_EQ(sockets.connections[0].sent, "xxxxx");
}

TEST_F(SendBodyTest, FailedSendFailsBeforeTheNextRead) {
  CountedSource source({5, 5, 0});
  sockets.sends.FailAt(1);
  EXPECT_FALSE(SendBody(source, connection));
  EXPECT_EQ(source.capacities.size(), 1u);
}

TEST_F(SendBodyTest, SourceThatCannotBeginFails) {
  CountedSource source({5, 0});
  source.canBegin = false;
  EXPECT_FALSE(SendBody(source, connection));
  EXPECT_THAT(sockets.log, IsEmpty());
}

}  // namespace
}  // namespace kest::testing
