#include "card.h"
#include "error_table.h"
#include "exit_codes.h"
#include "output.h"
#include "tables.h"
#include "words.h"

namespace kest_host {
namespace {

struct TestCard {
  const char* number;
  const char* kind;
  int type;
  const char* error;  // name in the table of errors
  const char* outcome;
};

constexpr TestCard testCards[] = {
#define KEST_TEST_CARD(number, kind, type, error, outcome) {number, kind, type, #error, outcome},
#include "test_cards.inc"
#undef KEST_TEST_CARD
};

std::int32_t CodeOf(const TestCard& card) {
  for (const KnownError& error : KnownErrors()) {
    if (std::string(error.name) == card.error) return error.code;
  }
  throw std::logic_error(std::string("the table of cards names an unknown error: ") + card.error);
}

Json CardsJson() {
  Json cards = Json::array();
  for (const TestCard& card : testCards) {
    cards.push_back({{"number", card.number},
                     {"kind", card.kind},
                     {"type", card.type},
                     {"typeName", CardTypeName(std::to_string(card.type))},
                     {"code", CodeOf(card)},
                     {"outcome", card.outcome}});
  }
  return cards;
}

}  // namespace

int RunCards(bool json) {
  if (json) {
    PrintJson({{"cards", CardsJson()}});
  } else {
    std::vector<std::vector<std::string>> rows = {{"Number", "Kind", "Receipt says", "Code", "Outcome"}};
    for (const TestCard& card : testCards) {
      rows.push_back({card.number, card.kind, CardTypeName(std::to_string(card.type)), std::to_string(CodeOf(card)),
                      card.outcome});
    }
    PrintRows(std::move(rows));
    Say("these are the sandbox's cards; another server has its own.");
  }
  FinishOutput();
  return exitDone;
}

}  // namespace kest_host
