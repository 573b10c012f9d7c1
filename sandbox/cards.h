// Judges the card of a billing: the test cards of tables/test_cards.inc decide the outcome, every other card is
// refused. The number is nowhere kept. No state: any thread may call.
#pragma once

#include <string>
#include <string_view>

#include "error_codes.h"

namespace sandbox {

struct CardVerdict {
  ErrorCode error;     // noError: the card pays
  std::string masked;  // the first two digits, which tell the card's type, "*", the last four; empty when it is no card
};

/// Judges the value of "KEST-CCard-Number"; spaces and dashes in it do not count.
CardVerdict JudgeCard(std::string_view text);

}  // namespace sandbox
