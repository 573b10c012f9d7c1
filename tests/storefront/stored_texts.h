// Everything that programs leave on this machine: searches files and the user's registry for a text, in 8-bit and in
// 16-bit characters.
#pragma once

#include <string>
#include <vector>

namespace storefront_test {

// The files below a folder that hold the text in their bytes, and those whose name does.
std::vector<std::string> FilesWith(const std::string& folder, const std::string& text);

// The keys below HKEY_CURRENT_USER of which the name, the name of a value or its data hold the text.
std::vector<std::string> KeysWith(const std::string& text);

}  // namespace storefront_test
