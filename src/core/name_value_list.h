// Ordered name/value texts: request fields, reply fields, HTTP header fields. Look-ups take the first pair whose name
// equals the wanted one ignoring the case of A to Z; two empty names are equal. One list belongs to one thread at a
// time.
#pragma once

#include <cstdint>

#include "core/object.h"
#include "core/object_array.h"
#include "core/string.h"

namespace kest {

class NameValuePair : public Object {
 public:
  NameValuePair() = default;
  NameValuePair(const String& pairName, const String& pairValue) : name(pairName), value(pairValue) {}
  NameValuePair(const NameValuePair&) = default;
  NameValuePair(NameValuePair&&) noexcept = default;
  NameValuePair& operator=(const NameValuePair&) = default;
  NameValuePair& operator=(NameValuePair&&) noexcept = default;
  ~NameValuePair() override = default;

  const String& Name() const { return name; }
  const String& Value() const { return value; }
  void SetValue(const String& newValue) { value = newValue; }

 private:
  String name;
  String value;
};

class NameValueList : public Object {
 public:
  NameValueList() = default;
  NameValueList(const NameValueList&) = default;
  NameValueList(NameValueList&&) noexcept = default;
  NameValueList& operator=(const NameValueList&) = default;
  NameValueList& operator=(NameValueList&&) noexcept = default;
  ~NameValueList() override = default;

  std::uint32_t Count() const { return pairs.Count(); }
  const NameValuePair& At(std::uint32_t index) const { return pairs.At(index); }
  // The index of the first pair of that name, or -1; null is the empty name.
  std::int32_t Find(const char* name) const;
  // A copy of the first such pair's value; empty when there is none.
  String Get(const char* name) const;

  // Replaces the value of the first pair of that name, whose name stays as it was first written, or appends a pair.
  void Set(const char* name, const String& value);
  // Appends a pair, also when the name is there already.
  void Add(const String& name, const String& value);
  void Add(NameValuePair&& pair);
  void Reserve(std::uint32_t count) { pairs.Reserve(count); }
  // Empties the list and keeps its room.
  void Clear() { pairs.Clear(); }

 private:
  ObjectArray<NameValuePair> pairs;
  [[maybe_unused]] bool isOwner = true;  // read by nobody here; it keeps its place in the layout
};

// The size in characters of all fields as header lines: name, ": ", value, "\r\n" each.
std::uint64_t HeaderLinesLength(const NameValueList& fields);
// Appends every field as such a line, in list order, making room for all of them first.
void AppendHeaderLines(const NameValueList& fields, String& text);

}  // namespace kest
