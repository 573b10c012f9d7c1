// The libFuzzer side of a target.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "fuzz/target.h"

namespace kest::testing {

void Broken(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

}  // namespace kest::testing

extern "C" int LLVMFuzzerInitialize(int*, char***);

extern "C" int LLVMFuzzerInitialize(int*, char***) {
  // The systems that stand behind the seam check with GoogleTest; what they find is a finding too.
  GTEST_FLAG_SET(break_on_failure, true);
  return 0;
}
