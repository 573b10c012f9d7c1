// kest receipt: shows the receipt that is stored on this machine for an application. Speaks to no server.
#pragma once

#include <string>

namespace kest_host {

struct ReceiptOptions {
  std::string library;
  std::string guid;    // of --guid
  std::string wanted;  // the argument; empty: that of --guid
  bool json = false;
};

// Answers the exit code. Throws std::runtime_error with a sentence for the user.
int RunReceipt(const ReceiptOptions& options);

}  // namespace kest_host
