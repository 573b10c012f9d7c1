// What the library keeps for the whole process at its edge. Written by the library entry and by the host's
// configuration calls, before requests start; read by any thread.
#pragma once

#include "core/string.h"
#include "os/os.h"

namespace kest {

struct LibraryState {
  os::ModuleHandle module = nullptr;  // the library's own, for its resources; null where there is none
  String applicationGuid;             // sent as "GUID" with GetProductList
  String resellerList;                // sent as "KEST-Reseller-List"; empty, as nothing local says otherwise
};

LibraryState& State();

// Sets the application GUID and, from it, the reseller list; null is empty. Throws Qor::MemoryException and changes
// nothing when there is no memory.
void SetApplicationGuid(const char* guid);

}  // namespace kest
