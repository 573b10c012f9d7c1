// The markers that tell other programs that receipts or products have changed: the text "1" as the value "Update" of
// the key that they watch. Failures are passed over. Any thread may call these.
#pragma once

namespace kest {

// Both throw Qor::MemoryException when there is no memory.
void MarkReceiptsUpdated();
void MarkProductsUpdated();

}  // namespace kest
