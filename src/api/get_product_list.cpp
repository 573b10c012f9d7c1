#include "api/get_product_list.h"

#include "api/library_state.h"
#include "core/exception.h"

namespace kest {

bool GetProductList(CommerceCall& call, ProductList& list, const String& versionId) {
  FieldSet reply;
  list.Set("GUID", State().applicationGuid);
  list.Set("VERSIONID", versionId);
  if (!ServiceCall(call, "GetProductList", list, reply)) {
    list.SetErrorCode(exchangeFailed);
    return false;
  }
  try {
    list.Load(reply);
  } catch (const Qor::MemoryException&) {
    // A reply for which there is no memory is no reply.
    list.SetErrorCode(exchangeFailed);
    throw;
  }
  return true;
}

}  // namespace kest
