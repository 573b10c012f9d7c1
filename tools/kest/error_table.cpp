#include "error_table.h"

#include <kestapi.h>

#include <algorithm>

namespace kest_host {

const std::vector<KnownError>& KnownErrors() {
  static const std::vector<KnownError> errors = [] {
    std::vector<KnownError> table = {
        {"exchangeFailed", KEST_ERROR_EXCHANGE, "no valid answer came from the server",
         "check that the server runs there, that the key is its own, and whether a proxy stands between", "library"},
#define KEST_ERROR_CODE(name, code, meaning, advice) {#name, code, meaning, advice, "sandbox"},
#include "error_codes.inc"
#undef KEST_ERROR_CODE
    };
    std::sort(table.begin(), table.end(), [](const auto& a, const auto& b) { return a.code < b.code; });
    return table;
  }();
  return errors;
}

const KnownError* FindError(std::int32_t code) {
  for (const KnownError& error : KnownErrors()) {
    if (error.code == code) return &error;
  }
  return nullptr;
}

}  // namespace kest_host
