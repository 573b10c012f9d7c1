// Are heads read by the stated rules, over every reader and however the bytes arrive?
#include "transport/header_block.h"

#include <optional>

#include "core/exception.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using HeaderBlockTest = TransportTest;

// The fields, or nothing when reading failed.
using Outcome = std::optional<Fields>;

Outcome Read(CharacterReader& reader) {
  HttpHeaderList headers;
  if (!ReadHeaderBlock(reader, headers)) return std::nullopt;
  return FieldsOf(headers);
}

Outcome ReadText(const std::string& text) {
  TextReader reader(Kest(text));
  return Read(reader);
}

struct StatusLine {
  bool isRead = false;
  std::string version;
  int status = 0;
  std::string reason;
};

bool operator==(const StatusLine& a, const StatusLine& b) {
  return a.isRead == b.isRead && a.version == b.version && a.status == b.status && a.reason == b.reason;
}

void PrintTo(const StatusLine& line, std::ostream* out) {
  *out << line.isRead << " '" << line.version << "' " << line.status << " '" << line.reason << "'";
}

StatusLine ReadStatus(const std::string& text) {
  TextReader reader(Kest(text));
  HttpReply reply;
  const bool isRead = ReadStatusLine(reader, reply);
  return {isRead, Plain(reply.version), reply.status, Plain(reply.reason)};
}

TEST_F(HeaderBlockTest, FieldsAreAppendedInTheirOrder) {
  HttpHeaderList headers;
  headers.Add("First", "0");
  TextReader reader("a: 1\r\nB: 2\r\na: 3\r\n\r\n");
  EXPECT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(FieldsOf(headers), (Fields{{"First", "0"}, {"a", "1"}, {"B", "2"}, {"a", "3"}}));
}

TEST_F(HeaderBlockTest, OnlyTheFirstColonEndsTheName) {
  EXPECT_EQ(ReadText("Location: http://host:81/a:b\r\n\r\n"), (Fields{{"Location", "http://host:81/a:b"}}));
}

TEST_F(HeaderBlockTest, NameInOtherLetterCaseIsFound) {
  TextReader reader("content-length: 5\r\n\r\n");
  HttpHeaderList headers;
  EXPECT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(Plain(headers.Get("Content-Length")), "5");
}

TEST_F(HeaderBlockTest, FoldedLineContinuesThePreviousValue) {
  EXPECT_EQ(ReadText("a: 1\r\n  2\r\n\t3\r\nb: 4\r\n\r\n"), (Fields{{"a", "1 2 3"}, {"b", "4"}}));
}

TEST_F(HeaderBlockTest, ColonInAFoldedLineBelongsToTheValue) {
  EXPECT_EQ(ReadText("a\r\n b: 1\r\n\r\n"), (Fields{{"a", "b: 1"}}));
  EXPECT_EQ(ReadText("a: 1\r\n b: 2\r\n\r\n"), (Fields{{"a", "1 b: 2"}}));
}

TEST_F(HeaderBlockTest, FoldedLineOfWhiteSpaceOnlyDoesNotCloseTheBlock) {
  EXPECT_EQ(ReadText("a: 1\r\n \r\nb: 2\r\n\r\n"), (Fields{{"a", "1"}, {"b", "2"}}));
}

TEST_F(HeaderBlockTest, FirstLineThatBeginsWithASpaceIsAField) {
  EXPECT_EQ(ReadText(" a: 1\r\n\r\n"), (Fields{{"a", "1"}}));
}

TEST_F(HeaderBlockTest, LineWithoutAColonHasAnEmptyValue) {
  EXPECT_EQ(ReadText("abc\r\nd: 1\r\n\r\n"), (Fields{{"abc", ""}, {"d", "1"}}));
}

TEST_F(HeaderBlockTest, EmptyNameAndEmptyValueStay) {
  EXPECT_EQ(ReadText(": 1\r\na:\r\n:\r\n\r\n"), (Fields{{"", "1"}, {"a", ""}, {"", ""}}));
}

TEST_F(HeaderBlockTest, NamesAndValuesAreTrimmedAtBothEnds) {
  EXPECT_EQ(ReadText(" \fa \t: \t\f1 2\f \r\n\r\n"), (Fields{{"a", "1 2"}}));
  EXPECT_EQ(ReadText("a\v:\v1\v\r\n\r\n"), (Fields{{"a\v", "\v1\v"}}));
}

TEST_F(HeaderBlockTest, LineEndsWithOrWithoutCarriageReturns) {
  EXPECT_EQ(ReadText("a: 1\nb: 2\r\r\nc: 3\r\n\n"), (Fields{{"a", "1"}, {"b", "2"}, {"c", "3"}}));
}

TEST_F(HeaderBlockTest, CarriageReturnBeforeAnythingElseIsAnError) {
  EXPECT_EQ(ReadText("a: 1\rb: 2\r\n\r\n"), std::nullopt);
  EXPECT_EQ(ReadText("a: 1\r\n\rb: 2\r\n\r\n"), std::nullopt);
  EXPECT_EQ(ReadText("a: 1\r \r\n\r\n"), std::nullopt);
}

TEST_F(HeaderBlockTest, CarriageReturnAtTheEndOfTheStreamIsIgnored) {
  EXPECT_EQ(ReadText("a: 1\r"), (Fields{{"a", "1"}}));
  EXPECT_EQ(ReadText("a: 1\r\n\r"), (Fields{{"a", "1"}}));
}

TEST_F(HeaderBlockTest, EndOfTheStreamClosesTheBlock) {
  EXPECT_EQ(ReadText("a: 1\r\n"), (Fields{{"a", "1"}}));
  EXPECT_EQ(ReadText("a: 1\r\nb: 2"), (Fields{{"a", "1"}, {"b", "2"}}));
  EXPECT_EQ(ReadText("a: 1\r\n "), (Fields{{"a", "1"}}));
}

TEST_F(HeaderBlockTest, EmptyLineAtOnceIsABlockWithoutFields) {
  EXPECT_EQ(ReadText("\r\na: 1\r\n\r\n"), Fields());
  EXPECT_EQ(ReadText("\n"), Fields());
}

TEST_F(HeaderBlockTest, NothingToReadFails) {
  EXPECT_EQ(ReadText(""), std::nullopt);
}

TEST_F(HeaderBlockTest, ZeroByteEndsTheText) {
  EXPECT_EQ(ReadText(std::string("a: 1\0b: 2\r\n\r\n", 14)), (Fields{{"a", "1"}}));
  EXPECT_EQ(ReadText(std::string("\0a: 1\r\n\r\n", 9)), std::nullopt);
}

TEST_F(HeaderBlockTest, BytesAboveSevenBitsAreCharacters) {
  EXPECT_EQ(ReadText("\xFC: \xFF\x80\r\n\r\n"), (Fields{{"\xFC", "\xFF\x80"}}));
}

TEST_F(HeaderBlockTest, BlockIsTakenOffTheReaderUpToItsEmptyLine) {
  TextReader reader("a: 1\r\n\r\nbody");
  HttpHeaderList headers;
  EXPECT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(reader.Read(), 'b');
}

TEST_F(HeaderBlockTest, ErrorOfTheConnectionFailsWhereverItComes) {
  const std::string text = "a: 1\r\n b\r\nc: 2\r\n\r\n";
  for (std::size_t cut = 0; cut < text.size(); ++cut) {
    sockets.conversations.push_back({{text.substr(0, cut)}, nullptr, {}, -1});
    SocketConnection connection;
    ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
    ConnectionReader reader(connection);
    EXPECT_EQ(Read(reader), std::nullopt) << cut;
  }
}

// Blocks with everything that could come apart at a seam.
const char* const seams[] = {"Name: value: more\r\nfolded: a\r\n\t b\r\nlone\r\n: x\r\n\r\nrest",
                             "a:1\nb :2\r\r\n c\n\n",
                             "a: 1\r\nb: 2",
                             "a: 1\r\nb\rc: 2\r\n\r\n",
                             "\r\nx",
                             "a: 1\r\n\r",
                             "a: 1\r\n \t\r\n\r\n"};

TEST_F(HeaderBlockTest, PiecesDoNotMatter) {
  for (const std::string text : seams) {
    const Outcome whole = ReadText(text);
    for (std::size_t size = 1; size <= text.size(); ++size) {
      sockets.conversations.push_back({{text}, nullptr, {size}});
      SocketConnection connection;
      ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
      ConnectionReader reader(connection);
      EXPECT_EQ(Read(reader), whole) << text << " in pieces of " << size;
    }
  }
}

TEST_F(HeaderBlockTest, PlaceOfASplitDoesNotMatter) {
  for (const std::string text : seams) {
    const Outcome whole = ReadText(text);
    for (std::size_t place = 1; place < text.size(); ++place) {
      sockets.conversations.push_back({{text}, nullptr, {place, text.size()}});
      SocketConnection connection;
      ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
      ConnectionReader reader(connection);
      EXPECT_EQ(Read(reader), whole) << text << " split at " << place;
    }
  }
}

TEST_F(HeaderBlockTest, CutAtEveryByteIsTheSameForTextAndConnection) {
  for (const std::string text : seams) {
    for (std::size_t cut = 0; cut < text.size(); ++cut) {
      sockets.conversations.push_back({{text.substr(0, cut)}});
      SocketConnection connection;
      ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
      ConnectionReader reader(connection);
      EXPECT_EQ(Read(reader), ReadText(text.substr(0, cut))) << text << " cut at " << cut;
    }
  }
}

TEST_F(HeaderBlockTest, LongLineTakesFewAllocations) {
  const String text = Kest("a: " + std::string(10 << 20, 'x') + "\r\n\r\n");
  TextReader reader(text);
  HttpHeaderList headers;
  sockets.Restart();
  ASSERT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(headers.At(0).Value().Length(), 10u << 20);
  // The buffer doubles from 512 to 16 million characters; then name, value and list.
  EXPECT_LE(sockets.Allocations(), 20u);
}

TEST_F(HeaderBlockTest, FieldsInMemoryGetTheirRoomAtOnce) {
  std::string lines;
  for (int i = 0; i < 10000; ++i) lines += "a: 1\r\n";
  TextReader reader(Kest(lines + "\r\n"));
  HttpHeaderList headers;
  sockets.Restart();
  ASSERT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(headers.Count(), 10000u);
  // A name and a value each; the list and the line's buffer once.
  EXPECT_EQ(sockets.Allocations(), 20002u);
}

TEST_F(HeaderBlockTest, FieldsThatArriveGrowTheListInProportion) {
  std::string lines;
  for (int i = 0; i < 20000; ++i) lines += "a: 1\r\n";
  sockets.conversations.push_back({{lines + "\r\n"}});
  SocketConnection connection;
  ASSERT_TRUE(connection.Connect("10.0.0.1", 80));
  ConnectionReader reader(connection);
  HttpHeaderList headers;
  sockets.Restart();
  ASSERT_TRUE(ReadHeaderBlock(reader, headers));
  EXPECT_EQ(headers.Count(), 20000u);
  EXPECT_LE(sockets.Allocations(), 40000u + 20u);
}

TEST_F(HeaderBlockTest, NoMemoryRaisesAndLeavesNothingBehind) {
  const std::string text = "abc: 1\r\n def\r\ng: 2\r\n\r\n";
  for (std::uint64_t point = 1;; ++point) {
    {
      TextReader reader(Kest(text));
      HttpHeaderList headers;
      sockets.FailAt(point, AllocationSystem::Failing::once);
      try {
        ReadHeaderBlock(reader, headers);
      } catch (const Qor::MemoryException&) {
      }
      sockets.FailNever();
    }
    ASSERT_EQ(sockets.Outstanding(), 0) << point;
    if (sockets.Allocations() < point) break;
  }
}

TEST(StatusLineReading, VersionStatusAndReasonAreTaken) {
  EXPECT_EQ(ReadStatus("HTTP/1.1 404 Not Found here\r\n"), (StatusLine{true, "1.1", 404, "Not Found here"}));
}

TEST(StatusLineReading, TokenWithoutASlashGivesVersionOne) {
  EXPECT_EQ(ReadStatus("HTTP 200 OK\r\n"), (StatusLine{true, "1.0", 200, "OK"}));
  EXPECT_EQ(ReadStatus("/1.1 200 OK\r\n"), (StatusLine{true, "1.1", 200, "OK"}));
  EXPECT_EQ(ReadStatus("\1 200 OK\r\n"), (StatusLine{true, "1.0", 200, "OK"}));
}

TEST(StatusLineReading, VersionIsAllBehindTheFirstSlash) {
  EXPECT_EQ(ReadStatus("HTTP/1/2 200\n"), (StatusLine{true, "1/2", 200, ""}));
  EXPECT_EQ(ReadStatus("HTTP/ 200\n"), (StatusLine{true, "", 200, ""}));
}

TEST(StatusLineReading, TokensEndAtSpacesTabsAndFormFeeds) {
  EXPECT_EQ(ReadStatus(" HTTP/1.0 \t 200\f a \t b \r\n"), (StatusLine{true, "1.0", 200, "a \t b"}));
}

TEST(StatusLineReading, LineWithoutAStatusGivesZero) {
  EXPECT_EQ(ReadStatus("HTTP/1.0\r\n"), (StatusLine{true, "1.0", 0, ""}));
  EXPECT_EQ(ReadStatus("\r\n"), (StatusLine{true, "1.0", 0, ""}));
}

TEST(StatusLineReading, StatusIsConvertedWithoutValidation) {
  EXPECT_EQ(ReadStatus("HTTP/1.0 2x0 OK\r\n").status, 2 * 100 + ('x' - '0') * 10);
  EXPECT_EQ(ReadStatus("HTTP/1.0 65537 OK\r\n").status, 1);
}

TEST(StatusLineReading, LastLineWithoutItsEndIsTaken) {
  EXPECT_EQ(ReadStatus("HTTP/1.0 200 OK"), (StatusLine{true, "1.0", 200, "OK"}));
}

TEST(StatusLineReading, FailsAtTheEndOfTheStreamAndLeavesTheReply) {
  EXPECT_EQ(ReadStatus(""), (StatusLine{false, "", 200, "OK"}));
}

TEST(StatusLineReading, FailsOnAMalformedLineEndAndLeavesTheReply) {
  EXPECT_EQ(ReadStatus("HTTP/1.0 404\rNot Found\r\n"), (StatusLine{false, "", 200, "OK"}));
}

}  // namespace
}  // namespace kest::testing
