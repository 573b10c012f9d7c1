// Calls of the C library with which a test of this program meddles: it is linked so that those of os come by here.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace os {

// How many bytes one read of this thread gives at most; 0 for as many as there are.
extern thread_local std::size_t mostReadAtOnce;

// The home that every user's entry tells; unset for the true one.
extern std::optional<std::string> homeOfUsers;

}  // namespace os
