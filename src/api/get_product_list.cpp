#include "api/get_product_list.h"

#include "api/library_state.h"

namespace kest {

bool GetProductList(CommerceCall& call, ProductList& list, const String& versionId) {
  FieldSet reply;
  list.Set("GUID", State().applicationGuid);
  list.Set("VERSIONID", versionId);
  if (!ServiceCall(call, "GetProductList", list, reply)) {
    list.SetErrorCode(exchangeFailed);
    return false;
  }
  list.Load(reply);
  return true;
}

}  // namespace kest
