#include "api/commerce_call.h"

#include <memory>
#include <utility>

#include "core/exception.h"
#include "transport/transport_request.h"

namespace kest {

bool ServiceCall(CommerceCall&, const String& operationName, FieldSet& request, FieldSet& reply) {
  request.Set("KEST-Service", operationName);
  try {
    const std::unique_ptr<FieldSet> received(TransportRequest(0, operationName.Text(), request));
    if (received == nullptr) return false;
    reply = std::move(*received);
    return true;
  } catch (const Qor::MemoryException&) {
    return false;
  }
}

}  // namespace kest
