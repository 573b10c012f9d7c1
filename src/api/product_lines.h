// What the objects that hold product records share: rendering them behind their fields, and filling them from a reply.
#pragma once

#include "core/product_record.h"

namespace kest {

// Appends the "KEST-Product" line of every record, in order; makes room for all of them first.
void AppendProductLines(const ProductRecords& records, String& text);

// A reply sorted into products and everything else, each in reply order.
struct SortedReply {
  NameValueList fields;
  ProductRecords records;
};

// Sorts a reply: each "KEST-Product" field (letter case ignored) becomes one record, every other field is kept as it is.
// Throws Qor::MemoryException when there is no memory.
SortedReply SortReply(const FieldSet& reply);

}  // namespace kest
