#include "sale.h"

#include <algorithm>
#include <iostream>
#include <iterator>

#include "exit_codes.h"
#include "failure.h"
#include "output.h"

namespace kest_host {
namespace {

struct FriendlyName {
  const char* field;
  const char* name;
};

// In the order in which people want to read them.
constexpr FriendlyName friendlyNames[] = {
    {"KEST-TxN", "Transaction"},   {"KEST-TotalAmount", "Total"}, {"KEST-TaxAmount", "Tax"},
    {"KEST-Merchant", "Merchant"}, {"KEST-CCard-Number", "Card"},
};

// What says nothing of the sale: it succeeded, and how the reply was protected.
bool IsOfTheProtocol(const std::string& field) {
  constexpr char prefix[] = "KEST-Auth-";
  return IsSameName(field, "KEST-Error") || IsSameName(field, "KEST-Protocol-Version") ||
         IsSameName(field.substr(0, sizeof prefix - 1), prefix);
}

bool IsFriendly(const std::string& field) {
  const auto isNamed = [&field](const FriendlyName& one) { return IsSameName(field, one.field); };
  return std::any_of(std::begin(friendlyNames), std::end(friendlyNames), isNamed);
}

// The named fields first, then whatever else the server sent.
Fields LinesOf(const Fields& fields) {
  Fields lines;
  for (const FriendlyName& one : friendlyNames) {
    if (const std::string* value = Find(fields, one.field)) lines.emplace_back(one.name, *value);
  }
  for (const auto& field : fields) {
    if (!IsFriendly(field.first) && !IsOfTheProtocol(field.first)) lines.push_back(field);
  }
  return lines;
}

}  // namespace

bool IsHeaderText(const std::string& text) {
  for (const char character : text) {
    if (static_cast<unsigned char>(character) < 0x20 || character == 0x7F) return false;
  }
  return true;
}

Fields ParseFields(const std::vector<std::string>& texts) {
  Fields fields;
  for (const std::string& text : texts) {
    const std::size_t equals = text.find('=');
    if (equals == 0 || equals == std::string::npos || !IsHeaderText(text) || text.find_first_of(": ") < equals) {
      throw UsageError("--field wants NAME=VALUE; the name has no blank and no colon, neither has a control character");
    }
    fields.emplace_back(text.substr(0, equals), text.substr(equals + 1));
    if (IsSameName(fields.back().first, "KEST-CCard-Number")) throw UsageError("the card is given with --card");
    if (IsSameName(fields.back().first, "KEST-TxN")) throw UsageError("the transaction is the argument of kest bill");
    // It would be charged beside the order.
    if (IsSameName(fields.back().first, "KEST-Product")) throw UsageError("products are ordered by their SKU");
  }
  return fields;
}

Held<KestCheckout> MakeCheckout(Library& library, const Fields& fields) {
  auto checkout = Hold(library.KestCreateCheckout(), library.KestDestroyCheckout);
  for (const auto& field : fields) {
    library.KestSetField(KEST_FIELDS(checkout.get()), field.first.c_str(), field.second.c_str());
  }
  return checkout;
}

void PrintRecord(const SaleRecord& record, bool json) {
  const bool failed = record.error != KEST_ERROR_NONE;
  if (json) {
    PrintJson({{record.kind, failed ? Json(nullptr) : ToJson(record.fields)},
               {"products", ToJson(record.products)},
               {"error", ErrorJson(record.error)}});
  } else if (!failed) {
    PrintLines(LinesOf(record.fields));
    if (!record.products.empty()) {
      std::cout << '\n';
      PrintRecords(record.products);
    }
  }
  FinishOutput();
}

}  // namespace kest_host
