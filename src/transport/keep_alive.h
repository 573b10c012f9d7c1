// Whether a connection may carry another exchange. Pure; any thread may call it.
#pragma once

#include "transport/http_reply.h"
#include "transport/http_request.h"

namespace kest {

// Decides by the request's version, its own connection field and the reply's connection token whether the connection
// stays open after `reply`, the answer to `request`.
//
// Deliberately crossed and inverted: a request of version "1.0" or below that carries "Keep-Alive" in the field of the
// other way of connecting ("Proxy-Connection" when it goes straight, "Connection" when it goes through a proxy) never
// keeps its connection. The commerce requests do just that when they go straight, so each travels on a connection of
// its own. Versions compare as plain text.
bool KeepsAlive(const HttpRequest& request, const HttpReply& reply);

}  // namespace kest
