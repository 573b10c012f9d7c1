// The record of named text fields with an error code: every request, reply, configuration record and result object.
// Whoever makes one owns it; hosts hold it as the address of its block. One FieldSet belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/name_value_list.h"
#include "core/object.h"
#include "core/string.h"

namespace kest {

class FieldSet : public Object {
 public:
  FieldSet() = default;
  FieldSet(const FieldSet&) = default;
  FieldSet(FieldSet&&) noexcept = default;
  // Throws Qor::MemoryException and changes nothing when there is no memory.
  FieldSet& operator=(const FieldSet& other);
  FieldSet& operator=(FieldSet&&) noexcept = default;

  // The virtual operations stand in the order of their slots.
  ~FieldSet() override = default;
  // Empties the fields and makes the version "1.0"; the error code stays as it is.
  virtual void Clear();
  // Renders the object as header lines: name, ": ", value, "\r\n" for each field, in list order.
  virtual String Format() const;
  // 2 for every class of the family.
  virtual int Kind() const;
  // A copy of the value of the first field of that name, letter case ignored; empty when there is none.
  virtual String Get(const char* name) const;

  // Replaces the value of the first field of that name, letter case ignored, or appends the field.
  void Set(const char* name, const String& value) { fields.Set(name, value); }
  // Appends the field, also when the name is there already.
  void Add(const String& name, const String& value) { fields.Add(name, value); }

  // 0 from the start; otherwise the last failure of an operation that filled or used this object.
  std::int32_t ErrorCode() const { return errorCode; }
  void SetErrorCode(std::int32_t code) { errorCode = code; }
  const String& Version() const { return version; }
  const NameValueList& Fields() const { return fields; }
  NameValueList& Fields() { return fields; }

 private:
  std::int32_t errorCode = 0;
  String version = "1.0";
  NameValueList fields;
  [[maybe_unused]] std::uint32_t scalars[2] = {0, 0};  // copied with the object, interpreted by nobody
};

}  // namespace kest
