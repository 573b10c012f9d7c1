// What every command needs that speaks to a server: the options that name it, and a library that is set up for it.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>

#include "library.h"

namespace kest_host {

struct ServerOptions {
  std::string library;  // path; empty: the one beside the program
  std::string server;
  std::uint16_t port = 80;
  std::string keyFile;
  std::string guid;
  std::string proxy;  // HOST[:PORT]; empty: none
};

// Sets server, key, proxy and application. Throws std::runtime_error when the key file, the key or the proxy is none.
void Configure(Library& library, const ServerOptions& options);

// An object of the library that is destroyed at the end of a scope.
template <typename Object>
using Held = std::unique_ptr<Object, void(KEST_CALL*)(Object*)>;

// Throws std::runtime_error when the library could not make the object.
template <typename Object>
Held<Object> Hold(Object* object, void(KEST_CALL* destroy)(Object*)) {
  if (object == nullptr) throw std::runtime_error("there is not enough memory");
  return Held<Object>(object, destroy);
}

}  // namespace kest_host
