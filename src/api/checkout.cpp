#include "api/checkout.h"

#include <utility>

namespace kest {
namespace {

constexpr char skuName[] = "SKU";

String Decimal(std::uint32_t value) {
  String text;
  text.AppendUnsigned(value);
  return text;
}

}  // namespace

void Checkout::Clear() {
  FieldSet::Clear();
  bill.Clear();
  purchase.Clear();
  order.Clear();
}

String Checkout::Format() const {
  String text = FieldSet::Format();
  AppendProductLines(order.Records(), text);
  return text;
}

void Checkout::AddOrderLine(std::uint32_t sku, std::uint16_t quantity) {
  const String skuText = Decimal(sku);
  ProductRecord line;
  line.Set(skuName, skuText);
  line.Set("Quantity", Decimal(quantity));
  ProductRecords& lines = order.Records();
  for (std::uint32_t i = 0; i < lines.Count(); ++i) {
    // Without copying: an order may have many lines.
    if (lines.At(i).Fields().At(0).Value().Equals(skuText)) {
      lines.At(i) = std::move(line);
      return;
    }
  }
  lines.AppendNew() = std::move(line);
}

}  // namespace kest
