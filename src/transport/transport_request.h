// The one way by which commerce operations send a request.
#pragma once

#include <cstdint>

#include "core/field_set.h"

namespace kest {

// Sends `request`, rendered by its Format, to the configured server as operation `operationName` and answers a new field
// set with the reply's fields, which the caller deletes; null on any failure of connection, handshake or exchange.
// `reserved` is 0. The host's object gets no field of the sealing: the rendered lines are read into a list of their own.
// Everything else that was made is destroyed before it returns. Throws Qor::MemoryException when there is no memory.
FieldSet* TransportRequest(std::uint32_t reserved, const char* operationName, const FieldSet& request);

}  // namespace kest
