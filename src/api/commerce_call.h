// The context of one commerce operation, and the operations' one way to the server. A CommerceCall stands on the stack
// of one exported function and belongs to its thread.
#pragma once

#include "core/field_set.h"
#include "core/string.h"

namespace kest {

class CommerceCall {
 public:
  CommerceCall() = default;

  // Whether common identity fields are added to requests and local records are kept: true for every exported function.
  bool IsBookkeepingLocally() const { return localBookkeeping; }
  void SetLocalBookkeeping(bool on) { localBookkeeping = on; }

 private:
  bool localBookkeeping = true;
};

// The error code of an exchange with the server that failed, for whatever reason.
constexpr std::int32_t exchangeFailed = 102;

// Runs one operation: sets the request's "KEST-Service" to `operationName`, sends the request and hands the server's
// answer whole to `reply`. False when the exchange failed or memory ran out in it; `reply` is then untouched and the
// request keeps its fields. It sets no error code. Throws Qor::MemoryException when there is no memory for the request's
// own field.
bool ServiceCall(CommerceCall& call, const String& operationName, FieldSet& request, FieldSet& reply);

}  // namespace kest
