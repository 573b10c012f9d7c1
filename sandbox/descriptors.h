// The file descriptors of the process. Any thread may call.
#pragma once

#include <cstddef>

namespace sandbox {

/// Lets the process have that many file descriptors, or as many below it as the system allows; returns how many it may
/// have.
std::size_t RaiseDescriptors(std::size_t wanted);

}  // namespace sandbox
