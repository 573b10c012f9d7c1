// What of a client's texts may stand in the log: only what has the form of a service name or of a GUID, so that neither
// a card number nor a key, nor a control character, gets there by way of them. No state: any thread may call.
#pragma once

#include <string>
#include <string_view>

namespace sandbox {

/// Returns a name of 1 to 40 letters, "-" and "_" as it is (no digits: they could be a card number), else a remark.
std::string SafeName(std::string_view name);

/// Returns a text in the form of a GUID (8-4-4-4-12 hexadecimal digits, braces or not) as it is, else a remark.
std::string SafeGuid(std::string_view guid);

}  // namespace sandbox
