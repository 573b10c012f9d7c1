#include "api/product_lines.h"

namespace kest {
namespace {

bool IsProduct(const NameValuePair& field) { return field.Name().EqualsIgnoringCase(productFieldName); }

std::uint32_t CountProducts(const NameValueList& fields) {
  std::uint32_t count = 0;
  for (std::uint32_t i = 0; i < fields.Count(); ++i) count += IsProduct(fields.At(i)) ? 1 : 0;
  return count;
}

}  // namespace

void AppendProductLines(const ProductRecords& records, String& text) {
  std::uint64_t length = text.Length();
  for (std::uint32_t i = 0; i < records.Count(); ++i) length += records.At(i).LineLength();
  text.Reserve(length);
  for (std::uint32_t i = 0; i < records.Count(); ++i) records.At(i).AppendLine(text);
}

ProductRecords ProductsOf(const FieldSet& reply) {
  const NameValueList& fields = reply.Fields();
  ProductRecords records;
  records.Reserve(CountProducts(fields));
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    if (IsProduct(fields.At(i))) records.AppendNew().Parse(fields.At(i).Value());
  }
  return records;
}

NameValueList OtherFieldsOf(const FieldSet& reply) {
  const NameValueList& fields = reply.Fields();
  NameValueList others;
  others.Reserve(fields.Count() - CountProducts(fields));
  for (std::uint32_t i = 0; i < fields.Count(); ++i) {
    if (!IsProduct(fields.At(i))) others.Add(fields.At(i).Name(), fields.At(i).Value());
  }
  return others;
}

}  // namespace kest
