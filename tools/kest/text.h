// Protocol texts, which are 8-bit, as the user's terminal and JSON want them.
#pragma once

#include <string>

namespace kest_host {

// UTF-8 as it is; anything else is taken for ISO 8859-1 and converted.
std::string ToUtf8(const std::string& text);

// The same with every control character replaced by "?", so that a server cannot steer the terminal.
std::string ForTerminal(const std::string& text);

// Columns that UTF-8 text takes: its code points.
std::size_t Columns(const std::string& utf8);

}  // namespace kest_host
