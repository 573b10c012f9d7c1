#include "masking.h"

#include <algorithm>
#include <vector>

namespace sandbox {
namespace {

constexpr std::size_t shortest = 12;  // digits of a card number
constexpr std::size_t longest = 19;
constexpr std::size_t shownBefore = 2;
constexpr std::size_t shownBehind = 4;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsSeparator(char c) {
  return c == ' ' || c == '-';
}

// Digits that stand together: their places in the text, and which of them begin or end a group.
struct Run {
  std::vector<std::size_t> places;
  std::size_t end = 0;  // behind the run

  bool Begins(std::size_t i) const { return i == 0 || places[i] != places[i - 1] + 1; }
  bool Ends(std::size_t i) const { return i + 1 == places.size() || places[i] + 1 != places[i + 1]; }
};

Run ReadRun(std::string_view text, std::size_t at) {
  Run run;
  for (; at < text.size() && (IsDigit(text[at]) || IsSeparator(text[at])); at++) {
    if (IsDigit(text[at])) run.places.push_back(at);
  }
  run.end = at;
  return run;
}

bool PassesLuhn(std::string_view text, const Run& run, std::size_t first, std::size_t count) {
  int sum = 0;
  for (std::size_t i = 0; i < count; i++) {
    const int digit = text[run.places[first + count - 1 - i]] - '0';
    const int doubled = digit * 2;
    sum += i % 2 == 0 ? digit : doubled / 10 + doubled % 10;
  }
  return sum % 10 == 0;
}

// A card number may stand beside other groups of digits, such as its date of expiry, so each row of whole groups is
// looked at.
void MaskRun(std::string_view text, const Run& run, std::string& shown) {
  for (std::size_t first = 0; first + shortest <= run.places.size(); first++) {
    if (!run.Begins(first)) continue;
    for (std::size_t count = shortest; count <= longest && first + count <= run.places.size(); count++) {
      if (!run.Ends(first + count - 1) || !PassesLuhn(text, run, first, count)) continue;
      for (std::size_t i = shownBefore; i < count - shownBehind; i++) shown[run.places[first + i]] = '*';
    }
  }
}

std::string MaskedWhole(const std::string& value) {
  const bool showsEnds = value.size() >= shortest;
  std::string shown(value.size(), '*');
  if (!showsEnds) return shown;
  std::copy(value.begin(), value.begin() + shownBefore, shown.begin());
  std::copy(value.end() - shownBehind, value.end(), shown.end() - shownBehind);
  return shown;
}

bool HoldsIgnoringCase(std::string_view text, std::string_view part) {
  for (std::size_t at = 0; at + part.size() <= text.size(); at++) {
    if (EqualIgnoringCase(text.substr(at, part.size()), part)) return true;
  }
  return false;
}

}  // namespace

std::string ShownText(std::string_view text) {
  std::string shown(text);
  for (std::size_t at = 0; at < text.size(); at++) {
    if (!IsDigit(text[at])) continue;
    const Run run = ReadRun(text, at);
    MaskRun(text, run, shown);
    at = run.end - 1;
  }
  return shown;
}

Field ShownField(const Field& field) {
  constexpr std::string_view sealing = "KEST-Auth-";
  std::string name = ShownText(field.name);
  if (EqualIgnoringCase(std::string_view(field.name).substr(0, sealing.size()), sealing)) {
    return {std::move(name), "(not shown)"};
  }
  if (HoldsIgnoringCase(field.name, "CCard")) return {std::move(name), MaskedWhole(field.value)};
  return {std::move(name), ShownText(field.value)};
}

FieldList ShownFields(const FieldList& fields) {
  FieldList shown;
  shown.reserve(fields.size());
  for (const Field& field : fields) shown.push_back(ShownField(field));
  return shown;
}

}  // namespace sandbox
