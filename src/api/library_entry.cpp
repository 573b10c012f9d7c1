// The library's entry: what happens when a process loads it and lets it go. The system calls it, one thread at a time.
#include "api/library_lifetime.h"

#ifdef _WIN32

#include <windows.h>

#include <cstdlib>

// The runtime's own handler spells out the type of an exception that nobody catches; for that it brings a demangler of
// 50 KB into the DLL. No exception leaves the library, so there is nothing to spell out.
namespace __gnu_cxx {
void __verbose_terminate_handler() { std::abort(); }
}  // namespace __gnu_cxx

extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, void*) {
  if (reason == DLL_PROCESS_ATTACH) {
    kest::AttachProcess(module);
  } else if (reason == DLL_PROCESS_DETACH) {
    kest::DetachProcess();
  }
  return TRUE;
}

#else

namespace {

class LibraryEntry {
 public:
  LibraryEntry() { kest::AttachProcess(nullptr); }
  ~LibraryEntry() { kest::DetachProcess(); }
};

LibraryEntry libraryEntry;

}  // namespace

#endif
