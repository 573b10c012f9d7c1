// Receipts of purchases in the current user's registry: one key a receipt, below a key for the day (UTC). No lock is
// taken: two writers may find the same free key, and the later one's values then stay. Both operations throw
// Qor::MemoryException when there is no memory; any thread may call them.
#pragma once

#include "core/field_set.h"
#include "core/product_record.h"
#include "core/string.h"

namespace kest {

// What a receipt is made of; all of it stays the caller's.
struct Sale {
  const String& guid;              // the application's
  const ProductRecords& products;  // what was bought: "Name" and "Price" of each
  const FieldSet& purchase;        // "KEST-TotalAmount", "KEST-Merchant", "KEST-TaxAmount" and "KEST-TxN" are read
  const String& cardNumber;        // read for the card's type only, never stored
};

// Writes the receipt and then marks products and receipts as changed. Ends silently where a key cannot be made, without
// the markers then; a value that cannot be written is passed over.
void StoreReceipt(const Sale& sale);

// Finds the first receipt, in the registry's order, that was stored for `guid`, byte by byte, and sets the seven
// "KEST-Receipt-" fields in `receipt`. False, and `receipt` unchanged, when there is none. Keys that cannot be opened
// are passed over. A receipt with an empty "Guid" or none is found by a null text only, that is by a String without
// storage, never by an empty one.
bool FindReceipt(const String& guid, FieldSet& receipt);

}  // namespace kest
