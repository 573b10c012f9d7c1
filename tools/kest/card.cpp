#include "card.h"

#include <algorithm>
#include <fstream>
#include <iostream>

#include "exit_codes.h"

namespace kest_host {
namespace {

constexpr std::size_t mostDigits = 32;
constexpr std::size_t leastCardDigits = 12;
constexpr std::size_t leastTellingDigits = 8;  // a shorter text is no number that anybody could use
constexpr std::size_t shownDigits = 6;         // the first two, which tell the kind, and the last four

bool IsDigit(char character) {
  return character >= '0' && character <= '9';
}

// Empty when `text` is no card number.
std::string DigitsOf(const std::string& text) {
  if (text.find_first_not_of("0123456789 -\r") != std::string::npos) return {};
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits), IsDigit);
  return digits.size() <= mostDigits ? digits : std::string();
}

std::string FirstLineDigits(std::istream& stream, const std::string& where) {
  std::string line;
  std::getline(stream, line);
  const std::string digits = DigitsOf(line);
  if (digits.empty()) throw std::runtime_error("the first line of " + where + " is no card number");
  return digits;
}

}  // namespace

std::string ReadCard(const std::string& value) {
  if (value == "-") return FirstLineDigits(std::cin, "stdin");
  if (!value.empty() && value[0] == '@') {
    const std::string path = value.substr(1);
    std::ifstream file(path);
    if (!file) throw std::runtime_error("the card file " + path + " cannot be read");
    return FirstLineDigits(file, path);
  }
  const std::string digits = DigitsOf(value);
  if (digits.empty()) throw UsageError("--card wants a card number, - for stdin or @FILE");
  return digits;
}

std::string MaskCard(const std::string& number) {
  const auto count = static_cast<std::size_t>(std::count_if(number.begin(), number.end(), IsDigit));
  if (count <= shownDigits) return number;
  const bool isShort = count < leastCardDigits;
  std::string masked = number;
  std::size_t seen = 0;
  for (char& character : masked) {
    if (!IsDigit(character)) continue;
    const bool isShown = seen < 2 || seen + 4 >= count;
    if (isShort || !isShown) character = '*';
    ++seen;
  }
  return masked;
}

void HideCard(Fields& fields, const std::string& number) {
  for (auto& field : fields) {
    if (IsSameName(field.first, "KEST-CCard-Number")) field.second = MaskCard(field.second);
    if (number.size() < leastTellingDigits) continue;
    const std::string masked = MaskCard(number);
    for (std::size_t at = 0; (at = field.second.find(number, at)) != std::string::npos; at += masked.size()) {
      field.second.replace(at, number.size(), masked);
    }
  }
}

std::string HideCards(const std::string& text) {
  std::string hidden;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t end = std::min(text.find_first_not_of("0123456789 -", position), text.size());
    const std::string run = text.substr(position, end - position);
    const auto digits = static_cast<std::size_t>(std::count_if(run.begin(), run.end(), IsDigit));
    hidden += digits >= leastCardDigits ? MaskCard(run) : run;
    if (end < text.size()) hidden += text[end];
    position = end + 1;
  }
  return hidden;
}

std::string CardTypeName(const std::string& code) {
  constexpr const char* names[] = {"American Express", "Discover", "Mastercard", "other", "Visa"};
  std::uint64_t number;
  return ParseNumber(code, 4, number) ? names[number] : "unknown";
}

}  // namespace kest_host
