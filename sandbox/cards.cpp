#include "cards.h"

#include <algorithm>

#include "decimal.h"
#include "wipe.h"

namespace sandbox {
namespace {

constexpr std::size_t leastDigits = 12;
constexpr std::size_t mostDigits = 19;

struct TestCard {
  std::string_view number;
  ErrorCode error;
};

constexpr TestCard testCards[] = {
#define KEST_TEST_CARD(number, kind, typeCode, error, outcome) {number, error},
#include "tables/test_cards.inc"
#undef KEST_TEST_CARD
};

bool IsFiller(char c) {
  return c == ' ' || c == '-';
}

// The check digit of ISO/IEC 7812-1 annex B: every second digit from the right is doubled, and its digits are added.
bool HasRightCheckDigit(std::string_view digits) {
  int sum = 0;
  bool doubled = false;
  for (auto digit = digits.rbegin(); digit != digits.rend(); ++digit) {
    const int value = (*digit - '0') * (doubled ? 2 : 1);
    sum += value / 10 + value % 10;
    doubled = !doubled;
  }
  return sum % 10 == 0;
}

std::string Masked(std::string_view digits) {
  std::string masked(digits.size(), '*');
  masked.replace(0, 2, digits.substr(0, 2));
  masked.replace(masked.size() - 4, 4, digits.substr(digits.size() - 4));
  return masked;
}

}  // namespace

CardVerdict JudgeCard(std::string_view text) {
  std::string digits;
  const WipedAtEnd digitsWiped(digits);
  digits.reserve(text.size());
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), [](char c) { return !IsFiller(c); });
  if (digits.empty()) return {noCardNumber, ""};
  const bool isNumber =
      digits.size() >= leastDigits && digits.size() <= mostDigits && std::all_of(digits.begin(), digits.end(), IsDigit);
  if (!isNumber || !HasRightCheckDigit(digits)) return {wrongCardNumber, ""};
  const auto card = std::find_if(std::begin(testCards), std::end(testCards),
                                 [&](const TestCard& one) { return one.number == digits; });
  return {card == std::end(testCards) ? notATestCard : card->error, Masked(digits)};
}

}  // namespace sandbox
