// What a failed operation of the library means: words for the user, JSON for programs, and the exit code.
#pragma once

#include <cstdint>

#include "output.h"
#include "session.h"

namespace kest_host {

// Tells on stderr why the operation failed that left `code`, and answers the exit code. Throws std::runtime_error for
// code 0: the library itself failed, for want of memory.
int ExplainFailure(std::int32_t code, const ServerOptions& options);

// {"code", "meaning", "advice"}, the latter two null for a code that is not in the table; null for code 0.
Json ErrorJson(std::int32_t code);

}  // namespace kest_host
