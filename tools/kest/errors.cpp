#include "error_table.h"
#include "exit_codes.h"
#include "output.h"
#include "tables.h"
#include "words.h"

namespace kest_host {
namespace {

std::vector<KnownError> Wanted(const std::string& code) {
  if (code.empty()) return KnownErrors();
  std::uint64_t number;
  if (!ParseNumber(code, INT32_MAX, number)) throw UsageError("an error code is a decimal number below 2147483648");
  const KnownError* known = FindError(static_cast<std::int32_t>(number));
  return known == nullptr ? std::vector<KnownError>() : std::vector<KnownError>{*known};
}

Json ToJson(const std::vector<KnownError>& errors) {
  Json array = Json::array();
  for (const KnownError& error : errors) {
    array.push_back({{"code", error.code},
                     {"name", error.name},
                     {"source", error.source},
                     {"meaning", error.meaning},
                     {"advice", error.advice}});
  }
  return array;
}

void PrintTable(const std::vector<KnownError>& errors) {
  std::vector<std::vector<std::string>> rows = {{"Code", "Source", "Meaning", "What to do"}};
  for (const KnownError& error : errors) {
    rows.push_back({std::to_string(error.code), error.source, error.meaning, error.advice});
  }
  PrintRows(std::move(rows));
}

}  // namespace

int RunErrors(const std::string& code, bool json) {
  const std::vector<KnownError> errors = Wanted(code);
  if (json) {
    PrintJson({{"errors", ToJson(errors)}});
  } else if (!errors.empty()) {
    PrintTable(errors);
    Say("codes other than " + std::to_string(KEST_ERROR_EXCHANGE) +
        " are the sandbox's; another server has its own.");
  }
  FinishOutput();
  if (!errors.empty()) return exitDone;
  Say("the sandbox has no error code " + code + "; another server has its own, ask who runs it.");
  return exitNotFound;
}

}  // namespace kest_host
