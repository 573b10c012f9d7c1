// The directories of the store: where it lies, and the way from a key to its subkeys. docs/registry.md describes the
// layout. Symbolic links inside of the store are not followed. Any thread may call.
#pragma once

#include <cstdint>
#include <string_view>

#include "os/posix/descriptor.h"

namespace os::posix {

// Whether what is missing is made.
enum class Missing { isAnError, isMade };

// Each answers errorSuccess with `key` open, or why not; `key` is then as it was. What they make is the owner's alone
// and on the disk when they answer.
std::int32_t OpenCurrentUser(Missing missing, Descriptor* key);
std::int32_t OpenSubkey(int parent, std::string_view name, Missing missing, Descriptor* key);

// The file in a key's directory that tells the key's name where the directory's own name does not.
extern const char nameFile[];

}  // namespace os::posix
