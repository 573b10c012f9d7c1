#include "platform/stream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

namespace kest {
namespace {

// Answers what a test says, and writes down what it was asked for.
class ScriptedStream : public Stream {
 public:
  explicit ScriptedStream(std::vector<std::int32_t> results) : answers(std::move(results)) {}

  std::vector<std::uint32_t> asked;
  std::string written;

  std::int32_t Read(void* bytes, std::uint32_t count) override {
    std::memset(bytes, 'x', count);
    return Answer(count);
  }
  std::int32_t Write(const void* bytes, std::uint32_t count) override {
    const std::int32_t answer = Answer(count);
    if (answer > 0) written.append(static_cast<const char*>(bytes), std::min<std::size_t>(count, answer));
    return answer;
  }

 private:
  // Without a further answer: everything.
  std::int32_t Answer(std::uint32_t count) {
    asked.push_back(count);
    return asked.size() <= answers.size() ? answers[asked.size() - 1] : static_cast<std::int32_t>(count);
  }

  std::vector<std::int32_t> answers;
};

using Counts = std::vector<std::uint32_t>;

TEST(StreamSkip, NothingToSkipThenNothingIsRead) {
  ScriptedStream stream({});
  EXPECT_EQ(0u, stream.Skip(0));
  EXPECT_TRUE(stream.asked.empty());
}

TEST(StreamSkip, ManyBytesThenTheyAreReadInChunks) {
  ScriptedStream stream({});
  EXPECT_EQ(20000u, stream.Skip(20000));
  EXPECT_EQ((Counts{8192, 8192, 3616}), stream.asked);
}

TEST(StreamSkip, ShortReadsThenTheRestIsAskedFor) {
  ScriptedStream stream({1, 8000});
  EXPECT_EQ(8193u, stream.Skip(8193));
  EXPECT_EQ((Counts{8192, 8192, 192}), stream.asked);
}

TEST(StreamSkip, StreamEndsThenTheBytesUpToThere) {
  ScriptedStream stream({8192, 100, 0});
  EXPECT_EQ(8292u, stream.Skip(100000));
  EXPECT_EQ(3u, stream.asked.size());
}

TEST(StreamSkip, ReadFailsThenTheBytesUpToThere) {
  ScriptedStream stream({8192, -1});
  EXPECT_EQ(8192u, stream.Skip(100000));
}

TEST(StreamSkip, MoreAnsweredThanAskedThenOnlyWhatWasAskedCounts) {
  ScriptedStream stream({9000, 2147483647});
  EXPECT_EQ(8200u, stream.Skip(8200));
  EXPECT_EQ((Counts{8192, 8}), stream.asked);
}

TEST(StreamWriteAll, NothingToWriteThenTrueAtOnce) {
  ScriptedStream stream({-1});
  EXPECT_TRUE(stream.WriteAll(nullptr, 0));
  EXPECT_TRUE(stream.asked.empty());
}

TEST(StreamWriteAll, ShortWritesThenAllOfIt) {
  ScriptedStream stream({2, 1});
  EXPECT_TRUE(stream.WriteAll("abcdef", 6));
  EXPECT_EQ("abcdef", stream.written);
  EXPECT_EQ((Counts{6, 4, 3}), stream.asked);
}

TEST(StreamWriteAll, AWriteOfNothingThenFalse) {
  ScriptedStream stream({2, 0});
  EXPECT_FALSE(stream.WriteAll("abcdef", 6));
  EXPECT_EQ("ab", stream.written);
  EXPECT_EQ(2u, stream.asked.size());
}

TEST(StreamWriteAll, AWriteFailsThenFalse) {
  ScriptedStream stream({-1});
  EXPECT_FALSE(stream.WriteAll("abcdef", 6));
}

TEST(StreamWriteAll, MoreAnsweredThanAskedThenAllOfIt) {
  ScriptedStream stream({2, 100});
  EXPECT_TRUE(stream.WriteAll("abcdef", 6));
  EXPECT_EQ((Counts{6, 4}), stream.asked);
}

}  // namespace
}  // namespace kest
