// Do both readers hand out the same characters and ends?
#include "transport/character_reader.h"

#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ::testing::ElementsAre;

class ConnectionReaderTest : public TransportTest {
 protected:
  void Serve(Conversation conversation) {
    sockets.conversations.push_back(std::move(conversation));
    ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
    sockets.log.clear();
  }

  SocketConnection connection;
  ConnectionReader reader{connection};
};

TEST(TextReader, HandsOutBytesAboveSevenBitsAsPositive) {
  TextReader reader("a\xFF");
  EXPECT_EQ(reader.Peek(), 'a');
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.Read(), 255);
  EXPECT_EQ(reader.Read(), 0);
  EXPECT_EQ(reader.Read(), 0);
}

TEST(TextReader, ZeroByteReadsAsTheEnd) {
  TextReader reader(String("a\0b", 3));
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.Read(), 0);
}

TEST(TextReader, TextWithoutStorageIsAtItsEnd) {
  TextReader reader{String()};
  EXPECT_EQ(reader.Read(), 0);
  EXPECT_EQ(reader.LinesInMemory(), 0u);
}

TEST(TextReader, LinesAreCountedUpToAnEmptyOne) {
  EXPECT_EQ(TextReader("a\r\nb\nc").LinesInMemory(), 2u);
  EXPECT_EQ(TextReader("a\r\nb\r\n\r\nc\r\nd\r\n").LinesInMemory(), 2u);
  EXPECT_EQ(TextReader("a\n\nc\n").LinesInMemory(), 1u);
  EXPECT_EQ(TextReader("\n\n\n").LinesInMemory(), 0u);
}

TEST(TextReader, ReadBytesCopiesZeroBytesToo) {
  TextReader reader(String("ab\0cd", 5));
  char bytes[8] = {};
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.ReadBytes(bytes, 3), 3);
  EXPECT_EQ(std::string(bytes, 3), std::string("b\0c", 3));
  EXPECT_EQ(reader.ReadBytes(bytes, sizeof bytes), 1);
  EXPECT_EQ(reader.ReadBytes(bytes, sizeof bytes), 0);
}

TEST_F(ConnectionReaderTest, BufferOf8192BytesIsFilledByOneReceive) {
  Serve({{std::string(8192, 'x') + "y"}});
  for (int i = 0; i < 8192; ++i) ASSERT_EQ(reader.Read(), 'x');
  EXPECT_THAT(sockets.log, ElementsAre("recv 8192"));
  EXPECT_EQ(reader.Read(), 'y');
  EXPECT_THAT(sockets.log, ElementsAre("recv 8192", "recv 8192"));
}

TEST_F(ConnectionReaderTest, EndOfTheStreamIsZeroAndStays) {
  Serve({{"a"}});
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.Peek(), 0);
  EXPECT_EQ(reader.Read(), 0);
  EXPECT_EQ(sockets.receives.Calls(), 2u);
}

TEST_F(ConnectionReaderTest, ErrorIsMinusOneAndStays) {
  Serve({{"a", "b"}});
  sockets.receives.FailAt(2);
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.Read(), -1);
  EXPECT_EQ(reader.Read(), -1);
  char byte;
  EXPECT_EQ(reader.ReadBytes(&byte, 1), -1);
}

TEST_F(ConnectionReaderTest, BytesBehindAHeadBelongToTheBody) {
  Serve({{"ab", "cd"}});
  char bytes[8];
  EXPECT_EQ(reader.Read(), 'a');
  EXPECT_EQ(reader.ReadBytes(bytes, sizeof bytes), 1);
  EXPECT_EQ(bytes[0], 'b');
  EXPECT_EQ(reader.ReadBytes(bytes, sizeof bytes), 2);
}

TEST_F(ConnectionReaderTest, ResetForgetsBufferAndEnd) {
  Serve({{"ab"}});
  EXPECT_EQ(reader.Read(), 'a');
  reader.Reset();
  EXPECT_EQ(reader.Read(), 0);
  reader.Reset();
  Serve({{"c"}});
  EXPECT_EQ(reader.Read(), 'c');
}

}  // namespace
}  // namespace kest::testing
