// kest cards, kest errors: what the server for development takes and answers. Speak to no server.
#pragma once

#include <string>

namespace kest_host {

// Each answers the exit code and throws std::runtime_error with a sentence for the user.
int RunCards(bool json);
// Every error code, or the one that `code` names; UsageError when it is no number.
int RunErrors(const std::string& code, bool json);

}  // namespace kest_host
