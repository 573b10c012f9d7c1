// String::Format beside snprintf: one or two conversions with whatever flags, width and precision, and texts around
// them. The input is a line with the format, "~" standing for a "%" that is none, and the arguments' values.
#include <algorithm>
#include <cstdio>
#include <cstring>

#include "fuzz/target.h"
#include "support/allocation_system.h"

namespace kest::testing {
namespace {

enum class Kind { number, wideNumber, real, text, pointer };

// A conversion that is well-formed, and the kind of its argument.
struct Conversion {
  Kind kind = Kind::number;
  int stars = 0;
};

struct Values {
  int width = 0, precision = 0;
  int number = 0;
  long long wideNumber = 0;
  double real = 0;
  std::string text;
};

class FormatReader {
 public:
  explicit FormatReader(const std::string& line) : format(line) {
    for (char& c : format) {
      if (c == '\0') c = ' ';
    }
  }

  // Rewrites the texts and finds the conversions; false for what C does not know, which has no outcome to hold.
  bool Read() {
    while (at < format.size()) {
      if (format[at] == '~') {
        result += "%%";
        ++at;
      } else if (format[at] == '%') {
        if (!ReadConversion()) return false;
      } else {
        result += format[at++];
      }
    }
    return !conversions.empty() && conversions.size() <= 2;
  }

  std::string result;
  std::vector<Conversion> conversions;

 private:
  void Copy(const char* set, std::size_t most) {
    for (; most > 0 && at < format.size() && std::strchr(set, format[at]) != nullptr; --most) result += format[at++];
  }
  void CopyNumber(Conversion& conversion) {
    if (at < format.size() && format[at] == '*') {
      result += format[at++];
      ++conversion.stars;
    } else {
      Copy("0123456789", 3);
    }
  }
  bool ReadConversion() {
    Conversion conversion;
    result += format[at++];
    Copy("#-+0 ", 5);
    // A precision alone may be the one star; which of the two it is makes no difference to the arguments.
    CopyNumber(conversion);
    if (at < format.size() && format[at] == '.') {
      result += format[at++];
      CopyNumber(conversion);
    }
    const bool isWide = format.compare(at, 2, "ll") == 0;
    if (isWide) Copy("l", 2);
    if (at == format.size()) return false;
    const char letter = format[at++];
    if (letter == '\0' || std::strchr("diouxXcsfegGEaAp", letter) == nullptr) return false;
    const bool isInteger = std::strchr("diouxX", letter) != nullptr;
    if (isWide && !isInteger) return false;
    result += letter;
    conversion.kind = letter == 's'                ? Kind::text
                      : letter == 'p'              ? Kind::pointer
                      : isWide                     ? Kind::wideNumber
                      : isInteger || letter == 'c' ? Kind::number
                                                   : Kind::real;
    conversions.push_back(conversion);
    return true;
  }

  std::string format;
  std::size_t at = 0;
};

template <typename... Arguments>
void HoldFormat(const std::string& format, Arguments... arguments) {
  const int count = std::snprintf(nullptr, 0, format.c_str(), arguments...);
  HOLD(count >= 0);
  std::string expected(static_cast<std::size_t>(count) + 1, '\0');
  std::snprintf(&expected[0], expected.size(), format.c_str(), arguments...);
  // What a "%c" of a zero makes of the text is its end.
  expected.resize(static_cast<std::size_t>(count));
  String text("what was there");
  text.Format(format.c_str(), arguments...);
  HOLD(Plain(text) == expected);
}

// Adds the arguments of one conversion behind those that are there, and goes on with the next.
template <typename... Arguments>
void Apply(const FormatReader& reader, std::size_t index, const Values& values, Arguments... arguments);

template <typename... Arguments>
void ApplyValue(const FormatReader& reader, std::size_t index, const Values& values, Arguments... arguments) {
  const std::size_t next = index + 1;
  switch (reader.conversions[index].kind) {
    case Kind::number:
      return Apply(reader, next, values, arguments..., values.number);
    case Kind::wideNumber:
      return Apply(reader, next, values, arguments..., values.wideNumber);
    case Kind::real:
      return Apply(reader, next, values, arguments..., values.real);
    case Kind::text:
      return Apply(reader, next, values, arguments..., values.text.c_str());
    case Kind::pointer:
      return Apply(reader, next, values, arguments..., static_cast<const void*>(&values));
  }
}

template <typename... Arguments>
void Apply(const FormatReader& reader, std::size_t index, const Values& values, Arguments... arguments) {
  if (index == reader.conversions.size()) {
    // Without arguments there is nothing to format.
    if constexpr (sizeof...(Arguments) != 0) HoldFormat(reader.result, arguments...);
    return;
  }
  if constexpr (sizeof...(Arguments) < 4) {
    const int stars = reader.conversions[index].stars;
    if (stars == 0) return ApplyValue(reader, index, values, arguments...);
    if (stars == 1) return ApplyValue(reader, index, values, arguments..., values.width);
    return ApplyValue(reader, index, values, arguments..., values.width, values.precision);
  }
}

template <typename Number>
Number Take(Input& input) {
  Number number = 0;
  const std::string bytes = input.Bytes(sizeof number);
  if (bytes.size() == sizeof number) std::memcpy(&number, bytes.data(), sizeof number);
  return number;
}

void Check(Input input) {
  FormatReader reader(input.Line());
  if (!reader.Read()) return;
  Values values;
  values.width = static_cast<std::int8_t>(input.Byte()) * 3;
  values.precision = static_cast<std::int8_t>(input.Byte());
  values.number = Take<int>(input);
  values.wideNumber = Take<long long>(input);
  values.real = Take<double>(input);
  values.text = input.Rest().c_str();
  AllocationSystem memory;
  {
    const SystemInForce inForce(memory);
    Apply(reader, 0, values);
    // An argument may be the text itself.
    String own = Kest(values.text);
    own.Format("<%s>%d", own.Text(), values.number);
    HOLD(Plain(own) == "<" + values.text + ">" + std::to_string(values.number));
  }
  HOLD(memory.Outstanding() == 0);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
