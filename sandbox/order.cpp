#include "order.h"

#include <algorithm>
#include <unordered_map>

#include "decimal.h"
#include "server_limits.h"

namespace sandbox {
namespace {

constexpr std::size_t mostDigits = 10;
constexpr std::uint64_t mostSku = 0xffffffff;
constexpr std::uint64_t mostQuantity = 0xffff;

struct OrderLine {
  std::uint32_t sku;
  std::int64_t quantity;
};

std::optional<std::uint64_t> ReadNumber(std::string_view text, std::uint64_t most) {
  const std::optional<std::uint64_t> number = text.size() <= mostDigits ? ReadDecimal(text) : std::nullopt;
  return number && *number <= most ? number : std::nullopt;
}

std::optional<OrderLine> ReadOrderLine(std::string_view text) {
  const std::optional<FieldList> record = ReadRecord(text);
  if (!record) return std::nullopt;
  const std::optional<std::uint64_t> sku = ReadNumber(FieldOrEmpty(*record, "SKU"), mostSku);
  const std::optional<std::uint64_t> quantity = ReadNumber(FieldOrEmpty(*record, "Quantity"), mostQuantity);
  if (!sku || !quantity || *quantity == 0) return std::nullopt;
  return OrderLine{static_cast<std::uint32_t>(*sku), static_cast<std::int64_t>(*quantity)};
}

SoldProduct Sold(const Product& product, std::int64_t quantity) {
  const FieldList& fields = product.fields;
  return {*FindField(fields, "SKU"), *FindField(fields, "Name"), *FindField(fields, "Price"), quantity};
}

ErrorCode FindSeller(const FieldList& request, const Catalogue& catalogue, const Application*& seller) {
  const std::string_view guid = FieldOrEmpty(request, "GUID");
  if (guid.empty()) return noError;
  seller = catalogue.Find(guid, FieldOrEmpty(request, "VERSIONID"));
  if (seller) return noError;
  return catalogue.HasGuid(guid) ? unknownVersion : unknownApplication;
}

}  // namespace

std::optional<FieldList> ReadRecord(std::string_view text) {
  FieldList record;
  for (std::size_t colon = text.find(':'); colon != std::string_view::npos; colon = text.find(':')) {
    if (record.size() == mostPairs) return std::nullopt;  // a pair of two bytes takes many times as much here
    const std::size_t end = std::min(text.find('^', colon), text.size());
    record.push_back({std::string(text.substr(0, colon)), std::string(text.substr(colon + 1, end - colon - 1))});
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return record;
}

ErrorCode PriceOrder(const FieldList& request, const Catalogue& catalogue, Sale& sale) {
  const Application* seller = nullptr;
  const ErrorCode found = FindSeller(request, catalogue, seller);
  if (found.code != noError.code) return found;

  std::unordered_map<const Application*, Cents> netOf;
  Cents net = 0;
  for (const Field& field : request) {
    if (!EqualIgnoringCase(field.name, "KEST-Product")) continue;
    if (sale.products.size() == mostOrderLines) return malformedOrderLine;
    const std::optional<OrderLine> line = ReadOrderLine(field.value);
    if (!line) return malformedOrderLine;
    const std::optional<Offer> offer = catalogue.FindSku(line->sku, seller);
    if (!offer) return unknownSku;
    // Held below the largest amount line by line, the sum cannot overflow.
    const Cents price = offer->product->price * line->quantity;
    net += price;
    if (net > mostCents) return orderTooLarge;
    netOf[offer->application] += price;
    if (sale.products.empty()) sale.merchant = offer->application->merchant;
    sale.products.push_back(Sold(*offer->product, line->quantity));
  }
  if (sale.products.empty()) return emptyOrder;

  for (const auto& [application, amount] : netOf) sale.tax += TaxOn(amount, application->taxRate);
  sale.total = net + sale.tax;
  return sale.total > mostCents ? orderTooLarge : noError;
}

}  // namespace sandbox
