#include "platform/registry_key.h"
#include "store/card_type.h"
#include "store/change_markers.h"
#include "store/receipt_paths.h"
#include "store/receipts.h"

namespace kest {
namespace {

// The path of today's receipts: month, day and year. The date is that of UTC, wherever the user is.
String DatePath() {
  os::SystemTime now{};
  os::system->GetSystemTime(&now);
  String date;
  date.AppendUnsigned(now.month);
  date.Append('-');
  date.AppendUnsigned(now.day);
  date.Append('-');
  date.AppendUnsigned(now.year);
  String path(receiptsPath);
  path.JoinPath(date);
  return path;
}

// The path of the first receipt of that day that is not there yet.
String NextReceiptPath(const String& datePath) {
  String path(datePath);
  path.Append('\\');
  const std::uint32_t prefix = path.Length();
  path.Reserve(std::uint64_t{prefix} + 10);  // 2^32 - 1 in decimal
  for (std::uint32_t sequence = 1;; ++sequence) {
    path.AppendUnsigned(sequence);
    RegistryKey probe;
    if (!probe.Open(os::CurrentUser(), path.Text(), os::keyRead)) return path;
    path.SetAt(prefix, '\0');
  }
}

void WriteProducts(RegistryKey& key, const ProductRecords& products) {
  // From the last to the first: of two products of one name the earlier one's price is meant to remain.
  for (std::uint32_t i = products.Count(); i > 0; --i) {
    const ProductRecord& product = products.At(i - 1);
    key.SetString(product.Get("Name").Text(), product.Get("Price"));
  }
}

void WriteValues(RegistryKey& key, const Sale& sale) {
  key.SetString("Guid", sale.guid);
  key.SetString("Amount", sale.purchase.Get("KEST-TotalAmount"));
  key.SetString("Merchant", sale.purchase.Get("KEST-Merchant"));
  key.SetString("Tax", sale.purchase.Get("KEST-TaxAmount"));
  key.SetString("TXN", sale.purchase.Get("KEST-TxN"));
  key.SetNumber("CardType", CardTypeOf(sale.cardNumber));
}

}  // namespace

void StoreReceipt(const Sale& sale) {
  const String path = NextReceiptPath(DatePath());
  RegistryKey receipt, products;
  if (!receipt.Create(os::CurrentUser(), path.Text(), os::keyAllAccess)) return;
  if (!products.Create(receipt.Handle(), "Products", os::keyAllAccess)) return;
  WriteProducts(products, sale.products);
  WriteValues(receipt, sale);
  // Whoever is woken by a marker must find the receipt complete.
  receipt.Close();
  products.Close();
  MarkProductsUpdated();
  MarkReceiptsUpdated();
}

}  // namespace kest
