// Does the outcome of a call depend on how its replies arrive? Each reply, good or bad, to each message comes whole, in
// pieces of every size, split at every place, and cut at every byte, then closed or reset. deliveries.txt holds how
// many that are at the least; how many this build must try follows from the lengths of the streams.
#include <gtest/gtest.h>
#include <kestapi.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <memory>

#include "shape/reply_rows.h"

namespace kest::testing {

void PrintTo(const Outcome& outcome, std::ostream* out) {
  *out << outcome.seen;
  for (const std::string& attempt : outcome.attempts) *out << "\n  " << attempt;
}

namespace {

// With the sanitizers a call takes twenty times as long. Where it is not 1, each reply has one delivery of so many, and
// the next reply has others.
constexpr std::size_t stride = KEST_SHAPE_STRIDE;

// The places from `first` to before `end` of a stream that are tried for the `row`-th reply.
std::vector<std::size_t> Places(std::size_t first, std::size_t end, std::size_t row) {
  std::vector<std::size_t> places;
  for (std::size_t place = first; place < end; ++place) {
    if ((place + row) % stride == 0) places.push_back(place);
  }
  return places;
}

// How many places that is.
std::size_t PlaceCount(std::size_t first, std::size_t end, std::size_t row, std::size_t step) {
  if (end <= first) return 0;
  return (end + row + step - 1) / step - (first + row + step - 1) / step;
}

class EveryShape : public ::testing::Test {
 protected:
  EveryShape() : world(std::make_unique<ShapeWorld>()), rows(AllRows(world->Server())) {}

  // Runs a row with one of its message's streams delivered in this way and the others whole.
  Outcome Run(const ReplyRow& row, std::size_t stream = 0, const Delivery& way = {}) {
    std::vector<Delivery> ways(row.streams.size());
    ways[row.firstStream + stream] = way;
    ++deliveries;
    return world->Run(row.call, row.streams, ways);
  }

  void Expect(const Outcome& expected, const Outcome& seen, const ReplyRow& row, const std::string& way) {
    if (expected.seen == seen.seen && expected.attempts == seen.attempts) return;
    ADD_FAILURE() << row.name << " " << way << ":\n"
                  << ::testing::PrintToString(seen) << "\nbut expected\n"
                  << ::testing::PrintToString(expected);
  }

  // Runs it so, which must give what the row states and send what was sent when all came whole.
  void ExpectTheSame(const ReplyRow& row, std::size_t stream, const Delivery& way, const Outcome& whole,
                     const std::string& words) {
    const Outcome seen = Run(row, stream, way);
    Expect({row.seen, row.attempts, {}}, seen, row, words);
    EXPECT_TRUE(seen.sent == whole.sent) << row.name << " " << words << ": what was sent depends on it";
  }

  // Every stream of each row's message that the client asks for: sweep(row, its number, stream, length in bytes).
  template <typename Sweep>
  void ForEachStream(Sweep&& sweep) {
    for (std::size_t number = 0; number < rows.size(); ++number) {
      const ReplyRow& row = rows[number];
      KestSetProxy(row.isProxied ? "10.1.1.1" : "", 3128);
      const std::size_t reached = std::min(row.streamCount, row.attempts.size() - row.firstStream);
      for (std::size_t stream = 0; stream < reached; ++stream) {
        std::size_t length = 0;
        for (const std::string& answer : row.streams[row.firstStream + stream]) length += answer.size();
        sweep(row, number, stream, length);
      }
    }
    KestSetProxy("", 0);
  }

  // Holds the deliveries to what follows from the rows: `wholes` of each stream, and `each` at every place from `first`
  // to before end(length).
  template <typename End>
  void ExpectAll(const std::string& sweep, std::size_t wholes, std::size_t each, std::size_t first, End end) {
    std::size_t all = 0, tried = 0;
    ForEachStream([&](const ReplyRow&, std::size_t number, std::size_t, std::size_t length) {
      all += wholes + each * PlaceCount(first, end(length), number, 1);
      tried += wholes + each * PlaceCount(first, end(length), number, stride);
    });
    EXPECT_EQ(tried, deliveries);
    ExpectAsManyAsBefore(sweep, all);
  }

  // Holds to earlier runs what a build has that tries everything, whether this one does or not.
  void ExpectAsManyAsBefore(const std::string& sweep, std::size_t all) {
    std::printf("%s: %zu of %zu deliveries of %zu replies\n", sweep.c_str(), deliveries, all, rows.size());
    std::ifstream file(KEST_SHAPE_DELIVERIES);
    std::string name;
    for (std::size_t least; file >> name >> least;) {
      if (name != sweep) continue;
      EXPECT_GE(all, least);
      return;
    }
    ADD_FAILURE() << sweep << " is missing from " << KEST_SHAPE_DELIVERIES;
  }

  std::unique_ptr<ShapeWorld> world;
  std::vector<ReplyRow> rows;
  std::size_t deliveries = 0;
};

TEST_F(EveryShape, WholeReplyGivesTheStatedOutcome) {
  ForEachStream([this](const ReplyRow& row, std::size_t, std::size_t stream, std::size_t) {
    if (stream == 0) Expect({row.seen, row.attempts, {}}, Run(row), row, "whole");
  });
  EXPECT_EQ(rows.size(), deliveries);
  ExpectAsManyAsBefore("whole", deliveries);
}

TEST_F(EveryShape, WholeReplyLeavesALoadedListWhole) {
  const std::vector<Stream> honest = HonestStreams(world->Server(), 3);
  for (const ReplyRow& row : rows) {
    if (row.call != Call::list || row.isProxied) continue;
    const Outcome seen = world->RunOnLoadedList(honest, row.streams);
    EXPECT_EQ((row.seen == failed ? "kept " : "") + row.seen, seen.seen) << row.name;
  }
}

TEST_F(EveryShape, WhatIsSentIsSealedAndTheSameForEveryReply) {
  const ReplyRow& honest = rows.at(0);
  const Outcome seen = Run(honest);
  ASSERT_EQ(2u, seen.sent.size());
  const auto request = [&seen](std::size_t i) {
    const std::size_t end = seen.sent[i].find("\r\n\r\n") + 4;
    ServerRequest one;
    one.head = seen.sent[i].substr(0, end);
    one.body = seen.sent[i].substr(end);
    return one;
  };
  EXPECT_NE(std::string::npos, world->Server().OpenHandshake(request(0)).find("KEST-Auth-Client-Key: "));
  EXPECT_NE(std::string::npos, world->Server().OpenRequest(request(1)).find("KEST-Service: GetProductList\r\n"));
  for (const ReplyRow& row : rows) {
    if (row.call != Call::list || row.isProxied) continue;
    EXPECT_EQ(seen.sent[0], Run(row).sent.at(0)) << row.name;
  }
}

TEST_F(EveryShape, PiecesOfAnySizeGiveTheSame) {
  ForEachStream([this](const ReplyRow& row, std::size_t number, std::size_t stream, std::size_t length) {
    const Outcome whole = Run(row);
    // A piece of half a stream or more and the rest are a stream that is split in two.
    for (const std::size_t size : Places(1, length / 2 + 1, number)) {
      Delivery way;
      way.pieceSize = size;
      ExpectTheSame(row, stream, way, whole, "in pieces of " + std::to_string(size));
    }
  });
  ExpectAll("pieces", 1, 1, 1, [](std::size_t length) { return length / 2 + 1; });
}

TEST_F(EveryShape, SplitAtAnyPlaceGivesTheSame) {
  ForEachStream([this](const ReplyRow& row, std::size_t number, std::size_t stream, std::size_t length) {
    const Outcome whole = Run(row);
    for (const std::size_t place : Places(1, length, number)) {
      Delivery way;
      way.split = place;
      ExpectTheSame(row, stream, way, whole, "split at " + std::to_string(place));
    }
  });
  ExpectAll("splits", 1, 1, 1, [](std::size_t length) { return length; });
}

TEST_F(EveryShape, CutAtAnyByteGivesTheStatedOutcome) {
  ForEachStream([this](const ReplyRow& row, std::size_t number, std::size_t stream, std::size_t length) {
    for (const std::size_t cut : Places(0, length, number)) {
      for (const int ending : {0, -1}) {
        Delivery way;
        way.cut = cut;
        way.ending = ending;
        // What comes before the end comes in pieces too, of other sizes at each place.
        if (cut % 2 != 0) way.pieceSize = 1 + cut % 5;
        const std::string words = "cut at " + std::to_string(cut) + (ending == 0 ? " and closed" : " and reset");
        Expect(row.AfterCut(stream, cut, ending != 0), Run(row, stream, way), row, words);
      }
    }
  });
  ExpectAll("cuts", 0, 2, 0, [](std::size_t length) { return length; });
}

}  // namespace
}  // namespace kest::testing
