// A host's locale whose decimal point is a comma, for one scope.
#pragma once

#include <clocale>
#include <cstring>
#include <string>

namespace kest::testing {

class DecimalComma {
 public:
  DecimalComma() : before(std::setlocale(LC_NUMERIC, nullptr)) {
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8", "German", "French", "German_Germany.1252"}) {
      if (std::setlocale(LC_NUMERIC, name) != nullptr && IsInForce()) return;
    }
  }
  ~DecimalComma() { std::setlocale(LC_NUMERIC, before.c_str()); }
  DecimalComma(const DecimalComma&) = delete;
  DecimalComma& operator=(const DecimalComma&) = delete;

  // False where the system has no such locale.
  static bool IsInForce() { return std::strcmp(std::localeconv()->decimal_point, ",") == 0; }

 private:
  std::string before;
};

}  // namespace kest::testing
