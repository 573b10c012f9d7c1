// kest doctor: looks what is wrong with the library, the key and the server, and goes on at the first fault.
#pragma once

#include "session.h"

namespace kest_host {

struct DoctorOptions {
  ServerOptions server;  // server and keyFile are checked when they are given
  std::string versionId;
  bool json = false;
};

// Answers the exit code: exitFailed when the library or the key is at fault, exitExchangeFailed when only the server
// is. What to do stands on stderr, one line a fault.
int RunDoctor(const DoctorOptions& options);

}  // namespace kest_host
