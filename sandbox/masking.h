// What of a message may be shown to those who watch the server: no key, no challenge, no connection id and no whole
// card number. No state: any thread may call.
#pragma once

#include <string>
#include <string_view>

#include "fields.h"

namespace sandbox {

/// Returns the text with each run of 12 digits or more masked, whether they pass for the number of a card or not: a
/// card number with a typing error is one digit away from a right one. Spaces, dashes and dots between the digits
/// belong to the run. Its first two digits stay, and its last four when nothing stands behind a card number in it: when
/// it is one group of 19 digits at most, or several of 16 at most with a last one of at least four. The others become
/// "*".
std::string ShownText(std::string_view text);

/// Returns the field with card numbers in name and value masked, the value of a field "KEST-Auth-..." replaced, and
/// that of a field whose name holds "CCard" masked whatever it is: but for its first two and last four characters, or
/// whole when it has less than 12.
Field ShownField(const Field& field);

/// Returns the fields as ShownField gives each.
FieldList ShownFields(const FieldList& fields);

}  // namespace sandbox
