// Asks the system whether a library is in this process.
#pragma once

#include <string>

namespace kest_road {

bool IsLoaded(const std::string& path);

}  // namespace kest_road
