#include "api/library_lifetime.h"

#include "api/library_state.h"
#include "transport/socket_startup.h"

namespace kest {

void AttachProcess(os::ModuleHandle module) {
  State().module = module;
  SocketStartup();
}

void DetachProcess() { SocketCleanup(); }

}  // namespace kest
