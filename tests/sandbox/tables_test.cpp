// Do the two tables that programs share hold what they promise: codes that a client can take, cards that pass and fail?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>

#include "error_codes.h"

namespace sandboxtest {
namespace {

struct Card {
  std::string number;
  std::string kind;
  int typeCode;
  sandbox::ErrorCode error;
};

const Card cards[] = {
#define KEST_TEST_CARD(number, kind, typeCode, error, outcome) {number, kind, typeCode, sandbox::error},
#include "tables/test_cards.inc"
#undef KEST_TEST_CARD
};

// ISO/IEC 7812-1 annex B, with the doubling written as a table.
bool PassesLuhn(std::string_view digits) {
  constexpr int doubled[] = {0, 2, 4, 6, 8, 1, 3, 5, 7, 9};
  int sum = 0;
  for (std::size_t i = 0; i < digits.size(); i++) {
    const int digit = digits[digits.size() - 1 - i] - '0';
    sum += i % 2 == 0 ? digit : doubled[digit];
  }
  return sum % 10 == 0;
}

// How a client tells the type of a card from the number that comes back to it.
int TypeCodeOf(std::string_view number) {
  const std::map<char, int> byFirst = {{'4', 4}, {'5', 2}, {'6', 1}};
  const auto found = byFirst.find(number[0]);
  if (found != byFirst.end()) return found->second;
  return number.substr(0, 2) == "37" ? 0 : 3;
}

TEST(ErrorCodes, AreUnique) {
  std::set<int> codes;
  std::set<std::string> meanings;
  for (const sandbox::ErrorCode& error : sandbox::errorCodes) {
    EXPECT_TRUE(codes.insert(error.code).second) << error.code;
    EXPECT_TRUE(meanings.insert(error.meaning).second) << error.meaning;
  }
  EXPECT_EQ(codes.size(), 18u);
}

TEST(ErrorCodes, LeaveOutTheCodeOfAFailedExchange) {
  for (const sandbox::ErrorCode& error : sandbox::errorCodes) {
    EXPECT_NE(error.code, 102);
    EXPECT_GE(error.code, 0);
  }
}

TEST(ErrorCodes, SayWhatTheyMeanAndWhatToDo) {
  for (const sandbox::ErrorCode& error : sandbox::errorCodes) {
    EXPECT_STRNE(error.meaning, "");
    EXPECT_STRNE(error.advice, "");
    EXPECT_EQ(std::string(error.meaning).find('|'), std::string::npos);
  }
}

TEST(TestCards, PassTheCheckOfTheirDigitsButTheOneThatIsForIt) {
  for (const Card& card : cards) {
    EXPECT_EQ(PassesLuhn(card.number), card.error.code != sandbox::wrongCardNumber.code) << card.number;
  }
}

TEST(TestCards, HaveTheTypeCodeThatAClientTellsFromTheirDigits) {
  for (const Card& card : cards) EXPECT_EQ(card.typeCode, TypeCodeOf(card.number)) << card.number;
}

TEST(TestCards, HaveOneThatSucceedsForEachTypeAndOneForEachFailure) {
  std::multiset<int> succeeding, failing;
  for (const Card& card : cards) {
    if (card.error.code == sandbox::noError.code) {
      succeeding.insert(card.typeCode);
    } else {
      failing.insert(card.error.code);
    }
  }
  EXPECT_THAT(succeeding, ::testing::ElementsAre(0, 1, 2, 3, 4));
  EXPECT_THAT(failing, ::testing::ElementsAre(1402, 1403, 1404, 1405, 1406));
}

}  // namespace
}  // namespace sandboxtest
