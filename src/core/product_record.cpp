#include "core/product_record.h"

#include <utility>

namespace kest {

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
  // Its own share: the text may be a field of this very record.
  const String held(text);
  Clear();
  const auto length = static_cast<std::int32_t>(held.Length());
  std::int32_t position = 0;
  for (;;) {
    const std::int32_t colon = held.Find(':', position);
    if (colon < 0) return;
    std::int32_t end = held.Find('^', colon);
    if (end < 0) end = length;
    const auto slice = [&held](std::int32_t from, std::int32_t to) {
      return held.Middle(static_cast<std::uint32_t>(from), static_cast<std::uint32_t>(to - from));
    };
    Fields().Add(NameValuePair(slice(position, colon), slice(colon + 1, end)));
    position = end + 1;
  }
}

}  // namespace kest
