#include "card.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

#include "exit_codes.h"

namespace kest_host {
namespace {

constexpr std::size_t mostDigits = 32;
constexpr std::size_t leastCardDigits = 12;
constexpr std::size_t leastTellingDigits = 8;  // a shorter text is no number that anybody could use
constexpr std::size_t shownDigits = 6;         // the first two, which tell the kind, and the last four

constexpr std::size_t guidLength = 36;
constexpr char digitsAndGaps[] = "0123456789 -";

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
  if (stream.bad()) throw std::runtime_error(where + " cannot be read");
  const std::string digits = DigitsOf(line);
  if (digits.empty()) throw std::runtime_error("the first line of " + where + " is no card number");
  return digits;
}

// Where the digits of `number` end that begin at `start`; `start` when they do not.
std::size_t EndOfNumber(const std::string& text, std::size_t start, const std::string& number) {
  std::size_t at = start;
  for (std::size_t i = 0; i < number.size(); ++i) {
    if (i > 0) at = std::min(text.find_first_not_of(" -", at), text.size());
    if (at == text.size() || text[at] != number[i]) return start;
    ++at;
  }
  return at;
}

// Whether a field's value is a number that may be as long as a card's and is none.
bool HoldsOtherNumbers(const std::string& name) {
  constexpr const char* names[] = {"KEST-TxN", "KEST-TotalAmount",   "KEST-TaxAmount",   "KEST-Receipt-TxN",
                                   "Price",    "KEST-Receipt-Total", "KEST-Receipt-Tax", "KEST-Receipt-Price",
                                   "SKU",      "Quantity"};
  return std::any_of(std::begin(names), std::end(names), [&name](const char* one) { return IsSameName(name, one); });
}

std::string MaskRuns(const std::string& text) {
  std::string hidden;
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t end = std::min(text.find_first_not_of(digitsAndGaps, position), text.size());
    const std::string run = text.substr(position, end - position);
    const auto digits = static_cast<std::size_t>(std::count_if(run.begin(), run.end(), IsDigit));
    hidden += digits >= leastCardDigits ? MaskCard(run) : run;
    if (end < text.size()) hidden += text[end];
    position = end + 1;
  }
  return hidden;
}

bool IsHexDigit(char character) {
  return IsDigit(character) || (character >= 'A' && character <= 'F') || (character >= 'a' && character <= 'f');
}

bool IsGuid(const std::string& text) {
  constexpr char shape[] = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";
  const auto fits = [](char character, char wanted) { return wanted == '-' ? character == '-' : IsHexDigit(character); };
  return std::equal(text.begin(), text.end(), shape, shape + guidLength, fits) &&
         text.find_first_not_of("0123456789-") != std::string::npos;
}

// Where the first GUID with a letter begins that stands alone; npos when there is none.
std::size_t FindGuid(const std::string& text) {
  constexpr char parts[] = "0123456789-ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  for (std::size_t at = text.find_first_of(parts); at != std::string::npos; at = text.find_first_of(parts, at)) {
    const std::size_t end = std::min(text.find_first_not_of(parts, at), text.size());
    if (end - at == guidLength && IsGuid(text.substr(at, guidLength))) return at;
    at = end;
  }
  return std::string::npos;
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

std::string HideNumber(const std::string& text, const std::string& number) {
  if (number.size() < leastTellingDigits) return text;
  std::string hidden = text;
  for (std::size_t start = 0; start < hidden.size(); ++start) {
    const std::size_t end = EndOfNumber(hidden, start, number);
    if (end > start) hidden.replace(start, end - start, MaskCard(hidden.substr(start, end - start)));
  }
  return hidden;
}

void HideCard(Fields& fields, const std::string& number) {
  for (auto& [name, value] : fields) {
    if (IsSameName(name, "KEST-CCard-Number")) value = MaskCard(value);
    value = HideNumber(value, number);
    if (!HoldsOtherNumbers(name)) value = HideCards(value);
    name = HideCards(HideNumber(name, number));
  }
}

std::string HideCards(const std::string& text) {
  const std::size_t guid = FindGuid(text);
  if (guid == std::string::npos) return MaskRuns(text);
  return MaskRuns(text.substr(0, guid)) + text.substr(guid, guidLength) + HideCards(text.substr(guid + guidLength));
}

std::string CardTypeName(const std::string& code) {
  constexpr const char* names[] = {"American Express", "Discover", "Mastercard", "other", "Visa"};
  std::uint64_t number;
  return ParseNumber(code, 4, number) ? names[number] : "unknown";
}

}  // namespace kest_host
