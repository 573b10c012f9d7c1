#include "store/change_markers.h"

#include "platform/registry_key.h"
#include "store/receipt_paths.h"

namespace kest {
namespace {

void Mark(const char* path) {
  RegistryKey key;
  if (!key.Create(os::CurrentUser(), path, os::keyAllAccess)) return;
  // Not a String, which takes memory: for lack of it a bill that has come whole would count as none.
  os::system->RegSetValueExA(key.Handle(), "Update", os::typeString, "1", 2);
}

}  // namespace

void MarkReceiptsUpdated() { Mark(receiptsPath); }

void MarkProductsUpdated() { Mark(productsPath); }

}  // namespace kest
