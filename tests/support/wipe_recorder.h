// Writes down which places are overwritten: a program that is linked with KEST_WIPE_RECORDER's options has its calls of
// Wipe come by here. What lay on the stack is seen by no search of freed memory.
#pragma once

#include <string>

namespace kest::testing {

class WipeRecorder {
 public:
  WipeRecorder();
  WipeRecorder(const WipeRecorder&) = delete;
  WipeRecorder& operator=(const WipeRecorder&) = delete;
  ~WipeRecorder();

  // The lengths of the places that this thread has wiped since the last call, in bytes: "64 16 64"; of several the same
  // in a row "64*3".
  std::string Lengths();
  // How often the stack of returned calls was wiped since the last call.
  int Stacks();
};

}  // namespace kest::testing
