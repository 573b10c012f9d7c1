// What of a client's texts may stand in the log: only one that the server knows itself, because a text that merely has
// the form of a name or of a GUID can still be a card number or a key. No state: any thread may call.
#pragma once

#include <string>
#include <string_view>

namespace sandbox {

/// Returns the text as it is when it is known, else a remark that tells its length in bytes and nothing else of it.
std::string LogText(std::string_view text, bool known);

}  // namespace sandbox
