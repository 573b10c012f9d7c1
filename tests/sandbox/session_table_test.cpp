// Does a session serve once, end when its time is over, and are ended ones forgotten in the end?
#include "session_table.h"

#include <gtest/gtest.h>

#include "refusal.h"

namespace sandboxtest {
namespace {

using sandbox::Refusal;
using sandbox::Session;
using sandbox::SessionTable;

class Sessions : public ::testing::Test {
 protected:
  Session Make(std::uint64_t number) {
    return {number, sandbox::SessionKey(std::string(136, 'k')), "client", "server", "/path"};
  }

  std::optional<Refusal> Take(const std::string& id) {
    try {
      taken = table.Take(id).number;
      return std::nullopt;
    } catch (const sandbox::Refused& refused) {
      return refused.refusal;
    }
  }

  int time = 0;
  SessionTable table{std::chrono::seconds(10), 3, [this] { return sandbox::Time(std::chrono::seconds(time)); }};
  std::uint64_t taken = 0;
};

TEST_F(Sessions, TakenOnceAreUsedFromThenOn) {
  table.Add("a", Make(1));
  EXPECT_EQ(Take("a"), std::nullopt);
  EXPECT_EQ(taken, 1u);
  EXPECT_EQ(Take("a"), Refusal::ConnectionUsed);
  EXPECT_EQ(Take("b"), Refusal::ConnectionUnknown);
}

TEST_F(Sessions, ExpireExactlyAtTheEndOfTheirTime) {
  table.Add("a", Make(1));
  time = 1;
  table.Add("b", Make(2));
  time = 9;
  EXPECT_EQ(table.Held(), 2u);
  time = 10;
  EXPECT_EQ(table.Held(), 1u);
  EXPECT_EQ(Take("a"), Refusal::ConnectionExpired);
  EXPECT_EQ(Take("b"), std::nullopt);
}

TEST_F(Sessions, BeyondTheLimitAreRefusedUntilOneEnds) {
  for (const char* id : {"a", "b", "c"}) table.Add(id, Make(1));
  EXPECT_THROW(table.Add("d", Make(4)), sandbox::Refused);
  EXPECT_EQ(Take("b"), std::nullopt);
  table.Add("d", Make(4));
  EXPECT_EQ(table.Held(), 3u);
  time = 10;
  table.Add("e", Make(5));
  EXPECT_EQ(table.Held(), 1u);
}

TEST_F(Sessions, EndedAreForgottenWhenAsManyEndedAfterThemAsMayBeHeld) {
  for (const char* id : {"a", "b", "c", "d"}) {
    table.Add(id, Make(1));
    EXPECT_EQ(Take(id), std::nullopt);
  }
  EXPECT_EQ(Take("a"), Refusal::ConnectionUnknown);
  EXPECT_EQ(Take("b"), Refusal::ConnectionUsed);
  EXPECT_EQ(Take("d"), Refusal::ConnectionUsed);
}

}  // namespace
}  // namespace sandboxtest
