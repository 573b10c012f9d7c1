#include "api/product_lines.h"

namespace kest {
namespace {

bool IsProduct(const NameValuePair& field) { return field.Name().EqualsIgnoringCase(productFieldName); }

}  // namespace

void AppendProductLines(const ProductRecords& records, String& text) {
  std::uint64_t length = text.Length();
  for (std::uint32_t i = 0; i < records.Count(); ++i) length += records.At(i).LineLength();
  text.Reserve(length);
  for (std::uint32_t i = 0; i < records.Count(); ++i) records.At(i).AppendLine(text);
}

SortedReply SortReply(const FieldSet& reply) {
  const NameValueList& fields = reply.Fields();
  std::uint32_t products = 0;
  for (std::uint32_t i = 0; i < fields.Count(); ++i) products += IsProduct(fields.At(i)) ? 1 : 0;
  SortedReply sorted;
  sorted.records.Reserve(products);
  sorted.fields.Reserve(fields.Count() - products);
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    const NameValuePair& field = fields.At(i);
    if (IsProduct(field)) {
      sorted.records.AppendNew().Parse(field.Value());
    } else {
      sorted.fields.Add(field.Name(), field.Value());
    }
  }
  return sorted;
}

}  // namespace kest
