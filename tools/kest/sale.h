// What buying and fetching a bill have in common: a checkout with the user's fields, and the showing of what came back.
#pragma once

#include <string>
#include <vector>

#include "fields.h"
#include "session.h"

namespace kest_host {

struct SaleOptions {
  ServerOptions server;
  std::vector<std::string> fields;  // NAME=VALUE
  bool json = false;
};

// Splits the NAME=VALUE of --field. Throws UsageError for what cannot travel as one header line, and for a name that
// has an option of its own.
Fields ParseFields(const std::vector<std::string>& texts);

// Whether a text can be the value of a header line: it has no control character.
bool IsHeaderText(const std::string& text);

Held<KestCheckout> MakeCheckout(Library& library, const Fields& fields);

// What a sale or a bill holds; without fields and with an error code when it failed.
struct SaleRecord {
  const char* kind;  // "purchase" or "bill": its name in JSON
  Fields fields;
  std::vector<Fields> products;
  std::int32_t error = 0;
};

// Shows a record as lines and a table, or as JSON {kind, "products", "error"}; a failed one as JSON alone.
void PrintRecord(const SaleRecord& record, bool json);

}  // namespace kest_host
