// A system for tests with several threads: sockets and registry of each thread are its own, everything else is the
// machine's. No lock is taken on the way there, because a lock would put the library's own accesses in an order and so
// hide a race from a tool that looks for one.
#pragma once

#include "support/forwarding_system.h"

namespace kest::testing {

class ThreadSystems : public ForwardingSystem {
 public:
  // Gives the calling thread a system of its own for one scope.
  class Own {
   public:
    explicit Own(os::System& system) { Current() = &system; }
    ~Own() { Current() = nullptr; }
    Own(const Own&) = delete;
    Own& operator=(const Own&) = delete;
  };

  std::int32_t RegOpenKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                             os::RegistryHandle* key) override {
    return Mine().RegOpenKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCreateKeyExA(os::RegistryHandle parent, const char* path, std::uint32_t options, std::uint32_t access,
                               os::RegistryHandle* key) override {
    return Mine().RegCreateKeyExA(parent, path, options, access, key);
  }
  std::int32_t RegCloseKey(os::RegistryHandle key) override { return Mine().RegCloseKey(key); }
  std::int32_t RegQueryValueExA(os::RegistryHandle key, const char* name, std::uint32_t* type, void* data,
                                std::uint32_t* size) override {
    return Mine().RegQueryValueExA(key, name, type, data, size);
  }
  std::int32_t RegSetValueExA(os::RegistryHandle key, const char* name, std::uint32_t type, const void* data,
                              std::uint32_t size) override {
    return Mine().RegSetValueExA(key, name, type, data, size);
  }
  std::int32_t RegEnumKeyExA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return Mine().RegEnumKeyExA(key, index, name, characters);
  }
  std::int32_t RegEnumValueA(os::RegistryHandle key, std::uint32_t index, char* name,
                             std::uint32_t* characters) override {
    return Mine().RegEnumValueA(key, index, name, characters);
  }

  os::Socket socket(int family, int type, int protocol) override { return Mine().socket(family, type, protocol); }
  int connect(os::Socket socket, const os::SocketAddress* address, int length) override {
    return Mine().connect(socket, address, length);
  }
  int send(os::Socket socket, const void* bytes, int length, int flags) override {
    return Mine().send(socket, bytes, length, flags);
  }
  int recv(os::Socket socket, void* bytes, int capacity, int flags) override {
    return Mine().recv(socket, bytes, capacity, flags);
  }
  int setsockopt(os::Socket socket, int level, int option, const void* value, int length) override {
    return Mine().setsockopt(socket, level, option, value, length);
  }
  int closesocket(os::Socket socket) override { return Mine().closesocket(socket); }
  const os::HostEntry* gethostbyname(const char* name) override { return Mine().gethostbyname(name); }

 private:
  static os::System*& Current() {
    static thread_local os::System* current = nullptr;
    return current;
  }
  static os::System& Mine() { return Current() != nullptr ? *Current() : os::Native(); }
};

}  // namespace kest::testing
