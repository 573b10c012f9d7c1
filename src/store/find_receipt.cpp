#include <clocale>
#include <cstring>
#include <utility>

#include "platform/registry_enumerator.h"
#include "platform/registry_key.h"
#include "store/receipt_paths.h"
#include "store/receipts.h"

namespace kest {
namespace {

// Opens the first receipt of one day whose "Guid" is `guid` as `found`; false when there is none.
bool FindOnDate(const RegistryKey& date, const String& guid, RegistryKey& found) {
  RegistryEnumerator sequences(date, RegistryItems::subkeys);
  for (String name = sequences.Next(); !name.IsEmpty(); name = sequences.Next()) {
    if (!found.Open(date.Handle(), name.Text(), os::keyRead)) continue;
    // Compare is meant: it keeps a receipt without a "Guid" from every request that names one, be it an empty one.
    if (found.QueryString("Guid").Compare(guid.Characters()) == 0) return true;
  }
  return false;
}

// What the runtime formatted in the host's locale, with "." as the decimal point.
String WithDot(const String& number) {
  const char* point = std::localeconv()->decimal_point;
  const char* found = std::strstr(number.Text(), point);
  if (found == nullptr) return number;
  String text(number.Text(), static_cast<std::uint32_t>(found - number.Text()));
  text.Append('.');
  text.Append(found + std::strlen(point));
  return text;
}

// Deliberately in single precision, as other readers of the receipts have it: beyond about 100000 the last cent may
// differ from exact subtraction.
String PriceOf(const String& amount, const String& tax) {
  // Through memory, where no processor keeps more digits than the type has.
  volatile float price = amount.ToFloat() - tax.ToFloat();
  String text;
  text.Format("%.2f", static_cast<double>(price));
  return WithDot(text);
}

void Fill(FieldSet& receipt, const String& date, const RegistryKey& key) {
  const String tax = key.QueryString("Tax");
  const String amount = key.QueryString("Amount");
  const String transaction = key.QueryString("TXN");
  const String merchant = key.QueryString("Merchant");
  String card;
  card.AppendUnsigned(key.QueryNumber("CardType"));
  // In a copy: when memory runs out the caller's record is as it was.
  NameValueList fields = receipt.Fields();
  fields.Set("KEST-Receipt-Date", date);
  fields.Set("KEST-Receipt-Price", PriceOf(amount, tax));
  fields.Set("KEST-Receipt-Tax", tax);
  fields.Set("KEST-Receipt-Total", amount);
  fields.Set("KEST-Receipt-Merchant", merchant);
  fields.Set("KEST-Receipt-Card", card);
  fields.Set("KEST-Receipt-TxN", transaction);
  receipt.Fields() = std::move(fields);
}

}  // namespace

bool FindReceipt(const String& guid, FieldSet& receipt) {
  RegistryKey receipts;
  if (!receipts.Open(os::CurrentUser(), receiptsPath, os::keyRead)) return false;
  RegistryEnumerator dates(receipts, RegistryItems::subkeys);
  for (String date = dates.Next(); !date.IsEmpty(); date = dates.Next()) {
    RegistryKey dateKey, found;
    if (!dateKey.Open(receipts.Handle(), date.Text(), os::keyRead)) continue;
    if (!FindOnDate(dateKey, guid, found)) continue;
    Fill(receipt, date, found);
    return true;
  }
  return false;
}

}  // namespace kest
