// What the objects that hold product records share: rendering them behind their fields, and filling them from a reply.
#pragma once

#include "core/object_array.h"
#include "core/product_record.h"

namespace kest {

using ProductRecords = ObjectArray<ProductRecord>;

// Appends the "KEST-Product" line of every record, in order; makes room for all of them first.
void AppendProductLines(const ProductRecords& records, String& text);

// Appends the fields of `reply` in order: each "KEST-Product" field (letter case ignored) becomes one record behind
// `records`, every other field goes to `target`'s own fields.
void LoadReply(const FieldSet& reply, FieldSet& target, ProductRecords& records);

}  // namespace kest
