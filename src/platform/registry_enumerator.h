// A walk over the names of one open key's subkeys or values, in the registry's order. The key is the caller's and stays
// open as long as the walk; the enumerator owns the area that names are put into. One walk belongs to one thread at a
// time.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "platform/registry_key.h"

namespace kest {

enum class RegistryItems : std::uint8_t { subkeys, values };

class RegistryEnumerator {
 public:
  // Throws Qor::MemoryException when there is no memory for the names' area.
  RegistryEnumerator(const RegistryKey& walked, RegistryItems wanted);
  ~RegistryEnumerator();
  RegistryEnumerator(const RegistryEnumerator&) = delete;
  RegistryEnumerator& operator=(const RegistryEnumerator&) = delete;

  // The next name; empty at the end of the walk and on failure. An item whose name is empty looks like the end, so that
  // a caller's loop ends there too. The index moves on whatever comes back; after 65536 items the walk has failed.
  String Next();
  // True when Next found that there were no more items, false when it failed otherwise and before.
  bool HasReachedEnd() const { return hasReachedEnd; }

 private:
  std::int32_t ReadName(std::uint32_t* characters);

  os::RegistryHandle key;
  RegistryItems items;
  std::uint16_t index = 0;
  bool hasReachedEnd = false;
  bool hasWrapped = false;
  char* nameArea;
};

}  // namespace kest
