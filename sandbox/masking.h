// What of a message may be shown to those who watch the server: no key, no challenge, no connection id and no whole
// card number. No state: any thread may call.
#pragma once

#include <string>
#include <string_view>

#include "fields.h"

namespace sandbox {

/// Returns the text with each card number in it masked: its first two and its last four digits stay, the others become
/// "*". A card number is 12 to 19 digits with spaces or dashes between them that pass the check of Luhn (ISO/IEC 7812-1
/// annex B); groups beside them that make no card number do not hide one.
std::string ShownText(std::string_view text);

/// Returns the field with card numbers in name and value masked, the value of a field "KEST-Auth-..." replaced, and
/// that of a field whose name holds "CCard" masked whatever it is: but for its first two and last four characters, or
/// whole when it has less than 12.
Field ShownField(const Field& field);

/// Returns the fields as ShownField gives each.
FieldList ShownFields(const FieldList& fields);

}  // namespace sandbox
