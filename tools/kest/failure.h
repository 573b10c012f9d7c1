// What a failed operation of the library means: words for the user, JSON for programs, and the exit code.
#pragma once

#include <cstdint>

#include "output.h"
#include "session.h"

namespace kest_host {

// Tells on stderr why the operation failed that left `code`, and answers the exit code. Throws std::runtime_error for
// code 0: the library itself failed, for want of memory.
int ExplainFailure(std::int32_t code, const ServerOptions& options);

// The same for a code that is known to be the server's own, whatever its number.
int ExplainRefusal(std::int32_t code);

// {"code", "meaning", "advice"}, the latter two null for a code that is not in the table, and for the library's own code
// when it `isServers`; null for code 0.
Json ErrorJson(std::int32_t code, bool isServers = false);

}  // namespace kest_host
