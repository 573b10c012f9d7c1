#include "masking.h"

#include <algorithm>

namespace sandbox {
namespace {

constexpr std::size_t shortest = 12;  // digits of a card number
constexpr std::size_t longest = 19;
constexpr std::size_t longestInGroups = 16;  // of those that are written in groups
constexpr std::size_t shownBefore = 2;
constexpr std::size_t shownBehind = 4;

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsSeparator(char c) {
  return c == ' ' || c == '-' || c == '.';
}

// Digits that stand together, with nothing but separators between them.
struct Run {
  std::size_t end;         // behind the last digit
  std::size_t digits = 0;  // all of them
  std::size_t last = 0;    // those of the last group
};

Run ReadRun(std::string_view text, std::size_t begin) {
  Run run{begin};
  for (std::size_t at = begin; at < text.size() && (IsDigit(text[at]) || IsSeparator(text[at])); at++) {
    if (!IsDigit(text[at])) continue;
    run.last = run.end == at ? run.last + 1 : 1;
    run.digits++;
    run.end = at + 1;
  }
  return run;
}

// The last digits of a longer run, and those of a short group, may be the code or the date behind a card number.
std::size_t ShownBehind(const Run& run) {
  const bool oneGroup = run.last == run.digits;
  const bool cardAlone = oneGroup ? run.digits <= longest : run.digits <= longestInGroups && run.last >= shownBehind;
  return cardAlone ? shownBehind : 0;
}

void MaskRun(std::string& text, std::size_t begin, const Run& run) {
  if (run.digits < shortest) return;
  const std::size_t behind = run.digits - ShownBehind(run);
  std::size_t digit = 0;
  for (std::size_t at = begin; at < run.end; at++) {
    if (!IsDigit(text[at])) continue;
    if (digit >= shownBefore && digit < behind) text[at] = '*';
    digit++;
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
    MaskRun(shown, at, run);
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
