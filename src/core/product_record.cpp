#include "core/product_record.h"

#include <utility>

namespace kest {

static_assert(sizeof(void*) != 4 || sizeof(ProductRecord) == 60, "nothing behind the base");

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
  const auto length = static_cast<std::int32_t>(text.Length());
  std::int32_t position = 0;
  for (;;) {
    const std::int32_t colon = text.Find(':', position);
    if (colon < 0) break;
    std::int32_t end = text.Find('^', colon);
    if (end < 0) end = length;
    const auto slice = [&text](std::int32_t from, std::int32_t to) {
      return text.Middle(static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from));
    };
    pairs.Add(NameValuePair(slice(position, colon), slice(colon + 1, end)));
    position = end + 1;
  }
  Clear();
  Fields() = std::move(pairs);
}

}  // namespace kest
