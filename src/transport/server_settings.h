// Where requests go: the commerce server, its public key and the proxy, for the whole process. Written by the host's
// configuration calls before requests start; read by any thread.
#pragma once

#include <cstdint>

#include "core/string.h"
#include "crypto/rsa_public_cipher.h"
#include "transport/http_url.h"

namespace kest {

struct ServerSettings {
  HttpUrl server;                    // scheme "http", host, port (0 means 80)
  HttpUrl proxy;                     // scheme "http", host (empty: no proxy), port
  RsaPublicCipher serverPublicKey;   // without a key until one is loaded
};

const ServerSettings& Settings();

// Starts the socket library, stores host and port, then loads the key. Answers whether the key text decoded; when it did
// not, host and port are stored and no key is loaded. Null texts are empty. Throws Qor::MemoryException when there is no
// memory; no key is loaded then either.
bool SetServer(const char* host, std::uint16_t port, const char* keyText);

// Loads the server's public key from its text: base64 (RFC 4648 section 4) of a DER SubjectPublicKeyInfo. False, and no
// key is loaded, when any step fails.
bool LoadServerPublicKey(const String& keyText);

// Stores the proxy; an empty host means none. Throws Qor::MemoryException, changing nothing, when there is no memory.
void SetProxy(const String& host, std::uint16_t port);

}  // namespace kest
