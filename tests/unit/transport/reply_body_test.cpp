// Is a body exactly as long as its head says, and never trusted further than that?
#include "transport/reply_body.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

class ReplyBodyTest : public TransportTest {
 protected:
  static HttpReply ReplyOf(const char* contentLength) {
    HttpReply reply;
    if (contentLength != nullptr) reply.headers.Add("content-length", contentLength);
    return reply;
  }
  void Serve(Conversation conversation) {
    sockets.conversations.push_back(std::move(conversation));
    ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
    reader.Reset();
  }
  std::string Read(const char* contentLength) { return Plain(ReadBody(reader, ReplyOf(contentLength))); }

  SocketConnection connection;
  ConnectionReader reader{connection};
};

std::string Bytes(std::size_t count) {
  std::string bytes;
  for (std::size_t i = 0; i < count; ++i) bytes += static_cast<char>(i * 31 + i / 256);
  return bytes;
}

TEST_F(ReplyBodyTest, ContentLengthIsConvertedAsTextIs) {
  EXPECT_EQ(ContentLength(ReplyOf(nullptr).headers), -1);
  EXPECT_EQ(ContentLength(ReplyOf("").headers), 0);
  EXPECT_EQ(ContentLength(ReplyOf("00123").headers), 123);
  EXPECT_EQ(ContentLength(ReplyOf("4294967306").headers), 10);
  EXPECT_EQ(ContentLength(ReplyOf("-5").headers), -25);
  EXPECT_EQ(ContentLength(ReplyOf("4294967295").headers), -1);
}

TEST_F(ReplyBodyTest, ExactlyAsManyBytesAsClaimedAreRead) {
  Serve({{"hello world"}});
  EXPECT_EQ(Read("5"), "hello");
  EXPECT_EQ(reader.Read(), ' ');
}

TEST_F(ReplyBodyTest, ZeroBytesArePartOfTheBody) {
  Serve({{std::string("a\0b", 3)}});
  EXPECT_EQ(Read("3"), std::string("a\0b", 3));
}

TEST_F(ReplyBodyTest, MissingOrZeroLengthReadsNothing) {
  Serve({{"hello"}});
  EXPECT_EQ(Read(nullptr), "");
  EXPECT_EQ(Read("0"), "");
  EXPECT_EQ(reader.Read(), 'h');
}

TEST_F(ReplyBodyTest, NegativeLengthReadsNothing) {
  Serve({{"hello"}});
  EXPECT_EQ(Read("-5"), "");
  EXPECT_EQ(Read("4294967295"), "");
  EXPECT_EQ(Read("2147483648"), "");
  EXPECT_EQ(reader.Read(), 'h');
}

TEST_F(ReplyBodyTest, BodyCutAnywhereIsEmpty) {
  const std::string body = Bytes(40);
  for (std::size_t cut = 0; cut < body.size(); ++cut) {
    for (const int ending : {0, -1}) {
      Serve({{body.substr(0, cut)}, nullptr, {}, ending});
      EXPECT_EQ(Read("40"), "") << cut;
    }
  }
}

TEST_F(ReplyBodyTest, PiecesDoNotMatter) {
  const std::string body = Bytes(100);
  for (std::size_t size = 1; size <= 100; ++size) {
    Serve({{body}, nullptr, {size}});
    EXPECT_EQ(Read("100"), body) << size;
  }
}

TEST_F(ReplyBodyTest, LengthsAroundThePiecesOfTheBufferAreRead) {
  for (const std::size_t length : {1, 8191, 8192, 8193, 16383, 16384, 16385, 40000, 300000}) {
    const std::string body = Bytes(length);
    Serve({{body}, nullptr, {8192, 1, 8191, 4096}});
    EXPECT_EQ(Read(std::to_string(length).c_str()), body) << length;
  }
}

TEST_F(ReplyBodyTest, MemoryGrowsWithTheBytesThatArriveNotWithTheClaim) {
  Serve({{Bytes(10000)}});
  sockets.largestBlock = 0;
  EXPECT_EQ(Read("2147483647"), "");
  EXPECT_LE(sockets.largestBlock, 33000u);
}

TEST_F(ReplyBodyTest, LongBodyIsCopiedInProportion) {
  const std::string body = Bytes(4 << 20);
  Serve({{body}});
  const HttpReply reply = ReplyOf("4194304");
  sockets.Restart();
  EXPECT_EQ(ReadBody(reader, reply).Length(), 4u << 20);
  EXPECT_LE(sockets.Allocations(), 12u);
}

TEST_F(ReplyBodyTest, SkippingTakesTheBodyAway) {
  Serve({{Bytes(20000) + "next"}});
  EXPECT_TRUE(SkipBody(reader, ReplyOf("20000")));
  EXPECT_EQ(reader.Read(), 'n');
}

TEST_F(ReplyBodyTest, SkippingWithoutALengthTakesNothing) {
  Serve({{"next"}});
  EXPECT_TRUE(SkipBody(reader, ReplyOf(nullptr)));
  EXPECT_EQ(reader.Read(), 'n');
}

TEST_F(ReplyBodyTest, SkippingFailsWhenTheBodyIsCutOrItsLengthNegative) {
  Serve({{"hello"}});
  EXPECT_FALSE(SkipBody(reader, ReplyOf("-1")));
  EXPECT_FALSE(SkipBody(reader, ReplyOf("4294967295")));
  EXPECT_FALSE(SkipBody(reader, ReplyOf("6")));
}

TEST_F(ReplyBodyTest, SkippingANegativeLengthTakesNothing) {
  Serve({{"next"}});
  EXPECT_FALSE(SkipBody(reader, ReplyOf("4294967295")));
  EXPECT_EQ(reader.Read(), 'n');
}

}  // namespace
}  // namespace kest::testing
