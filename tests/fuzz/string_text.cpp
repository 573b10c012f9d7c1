// String beside std::string: changing, searching and converting texts, with copies that share a block and arguments
// that lie in the text itself. The input is a sequence of operations, one letter each, with their operands.
#include <cctype>
#include <cstdio>

#include "fuzz/target.h"
#include "support/allocation_system.h"

namespace kest::testing {
namespace {

constexpr std::size_t longestText = 2000;  // characters

bool IsSpace(char c) {
  return c != '\0' && std::string(" \t\r\n\f").find(c) != std::string::npos;
}
bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
}

// A String and what it must hold.
struct Subject {
  String text;
  std::string model;
};

std::string Digits(const char* format, std::uint32_t value, std::uint32_t width) {
  char digits[300];
  std::snprintf(digits, sizeof digits, format, static_cast<int>(width), value);
  return digits;
}

void TrimLeft(std::string& text) {
  while (!text.empty() && IsSpace(text.front())) text.erase(0, 1);
}

void TrimRight(std::string& text) {
  while (!text.empty() && IsSpace(text.back())) text.pop_back();
}

void JoinPath(Subject& subject, const std::string& part) {
  subject.text.JoinPath(Kest(part));
  std::string& path = subject.model;
  if (!path.empty() && !part.empty() && !IsSeparator(path.back()) && !IsSeparator(part[0])) path += '\\';
  path += part;
}

void AppendNumber(Subject& subject, Input& input) {
  const std::uint32_t kind = input.Byte() % 3, width = input.Byte();
  std::uint32_t value = 0;
  for (int i = 0; i < 4; ++i) value = value << 8 | input.Byte();
  if (kind == 0) {
    subject.text.AppendUnsigned(value, width);
    subject.model += Digits("%0*u", value, width);
  } else if (kind == 1) {
    subject.text.AppendHex(value, width);
    subject.model += Digits("%0*x", value, width);
  } else {
    subject.text.AppendSigned(static_cast<std::int32_t>(value), width);
    const bool isNegative = value >> 31 != 0;
    subject.model += (isNegative ? "-" : "") + Digits("%0*u", isNegative ? 0 - value : value, width);
  }
}

void InsertInto(Subject& subject, Input& input) {
  const std::string bytes = input.Bytes(input.Byte() % 16);
  const auto position = static_cast<std::uint32_t>(input.Byte() % (subject.model.size() + 1));
  subject.text.Insert(bytes.data(), position, static_cast<std::uint32_t>(bytes.size()));
  subject.model.insert(position, bytes);
}

// From the text's own characters.
void AppendPart(Subject& subject, Input& input) {
  if (subject.model.empty()) return;
  const std::size_t begin = input.Byte() % subject.model.size();
  const std::size_t count = input.Byte() % (subject.model.size() - begin + 1);
  subject.text.Append(subject.text.Characters() + begin, static_cast<std::uint32_t>(count));
  subject.model += subject.model.substr(begin, count);
}

void SetAt(Subject& subject, Input& input) {
  if (subject.model.empty()) return;
  const std::size_t index = input.Byte() % subject.model.size();
  const char character = static_cast<char>(input.Byte());
  subject.text.SetAt(static_cast<std::uint32_t>(index), character);
  subject.model[index] = character;
  if (character == '\0') subject.model.resize(index);
}

void ToUpper(Subject& subject) {
  subject.text.ToUpper();
  for (char& c : subject.model) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}

void TakeBuffer(Subject& subject, Input& input) {
  const std::size_t length = input.Byte(), kept = std::min(length, subject.model.size());
  const char filler = static_cast<char>(input.Byte());
  char* characters = subject.text.TakeBuffer(static_cast<std::uint32_t>(length));
  for (std::size_t i = kept; i < length; ++i) characters[i] = filler;
  const Subject copy = subject;
  HOLD(copy.text.Characters() != characters);
  subject.text.ReturnBuffer();
  subject.model.resize(length, filler);
  HOLD(Plain(copy.text) == subject.model);
}

void Assign(Subject& subject, const std::string& bytes) {
  if (bytes.find('\0') != std::string::npos) {
    subject.text = Kest(bytes);
  } else {
    subject.text = bytes.c_str();
  }
  subject.model = bytes;
}

void Change(Subject& subject, char operation, Input& input) {
  switch (operation) {
    case 'a': {
      const std::string bytes = input.Bytes(input.Byte() % 64);
      subject.text.Append(Kest(bytes));
      subject.model += bytes;
      break;
    }
    case 'c':
      subject.text.Append(static_cast<char>(input.Byte()));
      subject.model += subject.text.At(subject.text.Length() - 1);
      break;
    case 'd':
      subject.text.Append(subject.text);
      subject.model += std::string(subject.model);
      break;
    case 'e':
      subject.text.Empty();
      subject.model.clear();
      break;
    case 'i':
      return InsertInto(subject, input);
    case 'j':
      return JoinPath(subject, input.Bytes(input.Byte() % 16));
    case 'm': {
      const std::uint32_t start = input.Byte(), count = input.Byte();
      subject.text = subject.text.Middle(start, count);
      subject.model = start < subject.model.size() ? subject.model.substr(start, count) : "";
      break;
    }
    case 'n':
      return AppendNumber(subject, input);
    case 'o':
      return AppendPart(subject, input);
    case 'r':
      return subject.text.Reserve(input.Byte() * 9);
    case 's':
      return SetAt(subject, input);
    case 'b':
      return TakeBuffer(subject, input);
    case 'u':
      return ToUpper(subject);
    case '<':
      subject.text.TrimLeft();
      return TrimLeft(subject.model);
    case '>':
      subject.text.TrimRight();
      return TrimRight(subject.model);
    case 't':
      subject.text.Trim();
      TrimRight(subject.model);
      return TrimLeft(subject.model);
    default:
      return Assign(subject, input.Bytes(input.Byte() % 64));
  }
}

void HoldContent(const Subject& subject) {
  HOLD(Plain(subject.text) == subject.model);
  HOLD(subject.text.IsEmpty() == subject.model.empty());
  if (subject.text.Characters() != nullptr) HOLD(subject.text.Characters()[subject.model.size()] == '\0');
}

void HoldConversions(const Subject& subject) {
  std::uint32_t number = 0, hex = 0, weight = 1;
  for (std::size_t i = subject.model.size(); i > 0; --i, weight *= 16) {
    const std::uint32_t code = static_cast<unsigned char>(subject.model[i - 1]);
    hex += weight * (code - (code < 58 ? 48 : code > 64 && code < 91 ? 55 : 87));
  }
  for (const char c : subject.model) number = number * 10 + static_cast<unsigned char>(c) - 48;
  HOLD(subject.text.ToUnsigned() == number);
  HOLD(subject.text.ToUnsignedHex() == hex);
  float value = 0;
  if (std::sscanf(subject.model.c_str(), "%f", &value) != 1) value = 0;
  const float ours = subject.text.ToFloat();
  HOLD(ours == value || (ours != ours && value != value));
}

int Position(std::size_t found) {
  return found == std::string::npos ? -1 : static_cast<int>(found);
}

int LastOf(const std::string& text, const std::string& set, int start) {
  const int last = static_cast<int>(text.size()) - 1;
  if (start >= last) return last;
  for (int i = last; i > start && i >= 0; --i) {
    if (set.find(text[static_cast<std::size_t>(i)]) != std::string::npos) return i;
  }
  return start;
}

int ReverseFind(const Subject& subject, char character, int start) {
  if (start < 0) return start;
  if (subject.text.Characters() == nullptr) return -1;
  const std::size_t length = subject.model.size();
  if (character == '\0' && static_cast<std::size_t>(start) >= length) return static_cast<int>(length);
  return length == 0 ? -1 : Position(subject.model.rfind(character, static_cast<std::size_t>(start)));
}

void HoldSearches(const Subject& subject, Input& input) {
  const std::string& model = subject.model;
  const char character = static_cast<char>(input.Byte());
  const int start = static_cast<std::int8_t>(input.Byte());
  HOLD(subject.text.Find(character, start) ==
       Position(model.find(character, static_cast<std::size_t>(std::max(start, 0)))));
  HOLD(subject.text.ReverseFind(character, start) == ReverseFind(subject, character, start));

  const std::string set = input.Bytes(input.Byte() % 8).c_str();
  const std::string visible = model.c_str();  // a set is looked for up to the first zero byte
  const auto within = static_cast<std::size_t>(std::max(start, 0)) % (visible.size() + 1);
  HOLD(subject.text.FindFirstOf(set.c_str(), static_cast<std::int32_t>(within)) ==
       Position(visible.find_first_of(set, within)));
  HOLD(subject.text.FindLastOf(set.c_str(), start) == LastOf(model, set, start));
}

void HoldComparisons(const Subject& a, const Subject& b) {
  HOLD((a.text == b.text) == (a.model == b.model));
  const std::string visible = b.model.c_str();
  HOLD((a.text.Compare(visible.c_str()) == 0) == (!a.model.empty() && a.model.c_str() == visible));
  HOLD((a.text.Compare(nullptr) == 0) == a.model.empty());
  std::string left = a.model.c_str(), right = visible;
  for (char& c : left) c = Lower(c);
  for (char& c : right) c = Lower(c);
  // A text of a zero byte is not empty.
  const bool isEqual = right.empty() ? a.model.empty() : left == right;
  HOLD(a.text.EqualsIgnoringCase(visible.c_str()) == isEqual);
}

void Run(Input input) {
  Subject subjects[3];
  while (!input.IsEmpty()) {
    Subject& subject = subjects[input.Byte() % 3];
    const char operation = static_cast<char>(input.Byte());
    if (operation == '=') {
      subject = subjects[input.Byte() % 3];
    } else if (operation == '?') {
      HoldSearches(subject, input);
    } else {
      Change(subject, operation, input);
    }
    if (subject.model.size() > longestText) Assign(subject, "");
    HoldConversions(subject);
    for (const Subject& other : subjects) {
      HoldContent(other);
      HoldComparisons(subject, other);
    }
  }
}

void Check(const Input& input) {
  AllocationSystem memory;
  {
    const SystemInForce inForce(memory);
    Run(input);
  }
  HOLD(memory.Outstanding() == 0);
}

}  // namespace
}  // namespace kest::testing

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t length) {
  kest::testing::Check(kest::testing::Input(bytes, length));
  return 0;
}
