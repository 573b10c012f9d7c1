#include "support/wipe_recorder.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace {

thread_local std::vector<std::size_t>* lengths = nullptr;
thread_local int stacks = 0;

}  // namespace

// The names that the compiler gives to kest::Wipe; that of kest::WipeStack is the same everywhere.
#if defined(_WIN64)
#define KEST_REAL __real__ZN4kest4WipeEPvy
#define KEST_WRAP __wrap__ZN4kest4WipeEPvy
#elif defined(_WIN32)
#define KEST_REAL __real__ZN4kest4WipeEPvj
#define KEST_WRAP __wrap__ZN4kest4WipeEPvj
#else
#define KEST_REAL __real__ZN4kest4WipeEPvm
#define KEST_WRAP __wrap__ZN4kest4WipeEPvm
#endif

extern "C" {

void KEST_REAL(void* memory, std::size_t bytes);

void KEST_WRAP(void* memory, std::size_t bytes) {
  if (lengths != nullptr) lengths->push_back(bytes);
  KEST_REAL(memory, bytes);
}

void __real__ZN4kest9WipeStackEv();

void __wrap__ZN4kest9WipeStackEv() {
  ++stacks;
  __real__ZN4kest9WipeStackEv();
}
}

namespace kest::testing {

WipeRecorder::WipeRecorder() {
  lengths = new std::vector<std::size_t>;
  stacks = 0;
}

WipeRecorder::~WipeRecorder() {
  delete lengths;
  lengths = nullptr;
}

std::string WipeRecorder::Lengths() {
  std::string told;
  for (std::size_t i = 0; i < lengths->size();) {
    std::size_t same = 1;
    while (i + same < lengths->size() && (*lengths)[i + same] == (*lengths)[i]) ++same;
    told += (told.empty() ? "" : " ") + std::to_string((*lengths)[i]) + (same > 1 ? "*" + std::to_string(same) : "");
    i += same;
  }
  lengths->clear();
  return told;
}

int WipeRecorder::Stacks() {
  return std::exchange(stacks, 0);
}

}  // namespace kest::testing
