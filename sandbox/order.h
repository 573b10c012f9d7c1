// Reads the order of a request and prices it by the catalogue: nothing that a client says of prices counts. No state:
// any thread may call.
#pragma once

#include <optional>
#include <string_view>

#include "catalogue.h"
#include "error_codes.h"
#include "fields.h"
#include "sale.h"

namespace sandbox {

/// Reads the value of a "KEST-Product" field: name, ":" and value, pairs separated by "^". A name reaches to the next
/// ":", so one that lacks its value becomes the beginning of the next name; at the end of the text it is dropped.
/// Returns nothing when there are more than mostPairs pairs.
std::optional<FieldList> ReadRecord(std::string_view text);

/// Prices the order of the request, its "KEST-Product" fields in their sequence, and puts products, total, tax and
/// merchant into the sale. Products are those of the application that "GUID" and "VERSIONID" name, and of the whole
/// catalogue when there is no "GUID" or an empty one. Tax is computed once for each application in the order. Returns
/// noError, or what is wrong with the order, which may be that it has more than mostOrderLines lines; the sale is of no
/// use then.
ErrorCode PriceOrder(const FieldList& request, const Catalogue& catalogue, Sale& sale);

}  // namespace sandbox
