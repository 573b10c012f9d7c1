// One product or order line: a FieldSet whose text form is the value of a "KEST-Product" field, name:value pairs joined
// by "^". One record belongs to one thread at a time.
#pragma once

#include <cstdint>

#include "core/field_set.h"
#include "core/object_array.h"

namespace kest {

// The name of the fields that carry product records.
constexpr char productFieldName[] = "KEST-Product";

class ProductRecord : public FieldSet {
 public:
  ProductRecord() = default;
  ProductRecord(const ProductRecord&) = default;
  ProductRecord(ProductRecord&&) noexcept = default;
  ProductRecord& operator=(const ProductRecord&) = default;
  ProductRecord& operator=(ProductRecord&&) noexcept = default;
  ~ProductRecord() override = default;

  // Renders the record as one header line: "KEST-Product", ": ", the pairs, "\r\n".
  String Format() const override;
  // The size of that line in characters, and the line behind the text that is there; for whoever renders many records
  // into one text and makes room for all of them first.
  std::uint64_t LineLength() const;
  void AppendLine(String& text) const;
  // Empties the record, then adds the pairs of `text`, which may be one of the record's own. A value may hold ":" but
  // no "^"; a pair without ":" in the middle deliberately becomes part of the next name, one at the end is dropped, a
  // text without ":" gives no pair. Throws Qor::MemoryException and changes nothing when there is no memory.
  void Parse(const String& text);
};

using ProductRecords = ObjectArray<ProductRecord>;

}  // namespace kest
