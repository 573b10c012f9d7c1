#include "store/change_markers.h"

#include "platform/registry_key.h"
#include "store/receipt_paths.h"

namespace kest {
namespace {

void Mark(const char* path) {
  RegistryKey key;
  if (key.Create(os::CurrentUser(), path, os::keyAllAccess)) key.SetString("Update", "1");
}

}  // namespace

void MarkReceiptsUpdated() { Mark(receiptsPath); }

void MarkProductsUpdated() { Mark(productsPath); }

}  // namespace kest
