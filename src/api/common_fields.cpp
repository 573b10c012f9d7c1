#include "api/common_fields.h"

#include "api/library_state.h"

namespace kest {

void AddCommonFields(const CommerceCall& call, Checkout& checkout) {
  if (call.IsBookkeepingLocally()) checkout.Set("KEST-Reseller-List", State().resellerList);
}

}  // namespace kest
