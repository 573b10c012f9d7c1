// A look at the keys of a JSON text before it is parsed. No state: any thread may call.
#pragma once

#include <string>

namespace sandbox {

/// How many keys an object in the JSON of faults has at most.
constexpr std::size_t mostKeys = 32;

/// Throws FaultError when an object has more keys than that, or a key twice. A text that is no JSON is looked at up to
/// where it ceases to be some, and left to whoever parses it.
void CheckKeys(const std::string& text);

}  // namespace sandbox
