// What the objects that hold product records share: rendering them behind their fields, and filling them from a reply.
#pragma once

#include "core/product_record.h"

namespace kest {

// Appends the "KEST-Product" line of every record, in order; makes room for all of them first.
void AppendProductLines(const ProductRecords& records, String& text);

// A reply's products, in reply order: one record for each "KEST-Product" field (letter case ignored). Throws
// Qor::MemoryException when there is no memory, as does the next one.
ProductRecords ProductsOf(const FieldSet& reply);

// Every other field of a reply, in reply order.
NameValueList OtherFieldsOf(const FieldSet& reply);

}  // namespace kest
