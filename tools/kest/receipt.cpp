#include "receipt.h"

#include "card.h"
#include "exit_codes.h"
#include "output.h"
#include "session.h"
#include "words.h"

namespace kest_host {
namespace {

// "KEST-Receipt-Date" becomes "Date"; two names are cleared up, and the card's code is put into words.
Fields LinesOf(const Fields& receipt) {
  constexpr char prefix[] = "KEST-Receipt-";
  Fields lines;
  for (const auto& [name, value] : receipt) {
    const bool isOurs = name.compare(0, sizeof prefix - 1, prefix) == 0;
    const std::string shortName = isOurs ? name.substr(sizeof prefix - 1) : name;
    lines.emplace_back(shortName == "TxN" ? "Transaction" : shortName,
                       shortName == "Card" ? CardTypeName(value) : value);
  }
  return lines;
}

}  // namespace

int RunReceipt(const ReceiptOptions& options) {
  const std::string guid = options.wanted.empty() ? options.guid : options.wanted;
  Library library(options.library);
  const auto set = Hold(library.KestCreateFieldSet(), library.KestFreeFieldSet);
  const bool found = library.KestLoadReceipt(set.get(), guid.empty() ? nullptr : guid.c_str()) != 0;
  Fields receipt = FieldsOf(library, set.get());
  HideCard(receipt, {});
  if (options.json) {
    PrintJson({{"receipt", found ? ToJson(receipt) : Json(nullptr)}});
  } else if (found) {
    PrintLines(LinesOf(receipt));
  }
  FinishOutput();
  if (found) return exitDone;
  Say("no receipt is stored here for " + (guid.empty() ? "an application without GUID" : guid) +
      ". The GUID counts with its letter case, and receipts are this user's and this machine's own.");
  return exitNotFound;
}

}  // namespace kest_host
