// One secure exchange with the commerce server: handshake, sealed request, opened reply.
#pragma once

#include "core/name_value_list.h"
#include "core/string.h"

namespace kest {

// Sends `request` to the configured server as service `serviceName` and appends the reply's fields to `reply`. A fresh
// session key goes to the server under its public key first; then the request travels under that key; every message
// carries a digest, and the replies must echo the challenges. The sealing sets its own three fields in `request`. False
// on any failure of connection, handshake or message; `reply` may then hold fields that are not to be used. Throws
// Qor::MemoryException when there is no memory.
bool SecureExchange(const String& serviceName, NameValueList& request, NameValueList& reply);

}  // namespace kest
