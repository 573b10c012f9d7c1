#include "core/product_record.h"

#include <utility>

namespace kest {

static_assert(sizeof(void*) != 4 || sizeof(ProductRecord) == 60, "nothing behind the base");

namespace {

// Where one pair stands in a record's text: the name from `begin`, the value behind `colon` up to `end`.
struct PairPosition {
  std::uint32_t begin = 0;
  std::uint32_t colon = 0;
  std::uint32_t end = 0;

  // Finds the pair that starts at `begin`; false when there is none.
  bool FindIn(const String& text) {
    const std::int32_t nextColon = text.Find(':', static_cast<std::int32_t>(begin));
    if (nextColon < 0) return false;
    const std::int32_t separator = text.Find('^', nextColon);
    colon = static_cast<std::uint32_t>(nextColon);
    end = separator >= 0 ? static_cast<std::uint32_t>(separator) : text.Length();
    return true;
  }
};

std::uint32_t CountPairs(const String& text) {
  std::uint32_t count = 0;
  for (PairPosition at; at.FindIn(text); at.begin = at.end + 1) ++count;
  return count;
}

}  // namespace

String ProductRecord::Format() const {
  String line;
  line.Reserve(LineLength());
  AppendLine(line);
  return line;
}

std::uint64_t ProductRecord::LineLength() const {
  const NameValueList& pairs = Fields();
  std::uint64_t length = sizeof productFieldName - 1 + 4;
  for (std::uint32_t i = 0; i < pairs.Count(); ++i) {
    length += std::uint64_t{pairs.At(i).Name().Length()} + pairs.At(i).Value().Length() + (i != 0 ? 2 : 1);
  }
  return length;
}

void ProductRecord::AppendLine(String& text) const {
  const NameValueList& pairs = Fields();
  text.Append(productFieldName);
  text.Append(": ", 2);
  for (std::uint32_t i = 0; i < pairs.Count(); ++i) {
    if (i != 0) text.Append('^');
    text.Append(pairs.At(i).Name());
    text.Append(':');
    text.Append(pairs.At(i).Value());
  }
  text.Append("\r\n", 2);
}

void ProductRecord::Parse(const String& text) {
  // Into a list of its own: the text may be a field of this very record, and memory may run out half-way.
  NameValueList pairs;
  pairs.Reserve(CountPairs(text));
  for (PairPosition at; at.FindIn(text); at.begin = at.end + 1) {
    pairs.Add(NameValuePair(text.Middle(at.begin, at.colon - at.begin), text.Middle(at.colon + 1, at.end - at.colon - 1)));
  }
  Clear();
  Fields() = std::move(pairs);
}

}  // namespace kest
