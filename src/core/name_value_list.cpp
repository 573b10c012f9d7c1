#include "core/name_value_list.h"

#include <utility>

namespace kest {

static_assert(sizeof(void*) != 4 || sizeof(NameValuePair) == 20, "the size of the array's elements");
static_assert(sizeof(void*) != 4 || sizeof(ObjectArray<NameValuePair>) == 16, "count, step, capacity, elements");
static_assert(sizeof(void*) != 4 || sizeof(NameValueList) == 32, "base, array, flag");

std::int32_t NameValueList::Find(const char* name) const {
  for (std::uint32_t i = 0; i < pairs.Count(); ++i) {
    if (pairs.At(i).Name().EqualsIgnoringCase(name)) return static_cast<std::int32_t>(i);
  }
  return -1;
}

String NameValueList::Get(const char* name) const {
  const std::int32_t index = Find(name);
  return index >= 0 ? pairs.At(static_cast<std::uint32_t>(index)).Value() : String();
}

void NameValueList::Set(const char* name, const String& value) {
  const std::int32_t index = Find(name);
  if (index >= 0) {
    pairs.At(static_cast<std::uint32_t>(index)).SetValue(value);
  } else {
    Add(name, value);
  }
}

void NameValueList::Add(const String& name, const String& value) { Add(NameValuePair(name, value)); }

void NameValueList::Add(NameValuePair&& pair) {
  // The pair is made before the list grows: `name` and `value` may lie in this list.
  pairs.AppendNew() = std::move(pair);
}

std::uint64_t HeaderLinesLength(const NameValueList& fields) {
  std::uint64_t length = 0;
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    length += std::uint64_t{fields.At(i).Name().Length()} + fields.At(i).Value().Length() + 4;
  }
  return length;
}

void AppendHeaderLines(const NameValueList& fields, String& text) {
  text.Reserve(text.Length() + HeaderLinesLength(fields));
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    text.Append(fields.At(i).Name());
    text.Append(": ", 2);
    text.Append(fields.At(i).Value());
    text.Append("\r\n", 2);
  }
}

}  // namespace kest
