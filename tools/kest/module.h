// A shared library in the process, from opening it until the object is destroyed. What is found in it counts only so
// long. Knows both ways of naming a function: Windows asks by ordinal, the others by name.
#pragma once

#include <string>

namespace kest_host {

class Module {
 public:
  using Function = void (*)();

  // Opens `path`, or, when that is empty, KESTAPI beside the program, then from where the system looks. Throws
  // std::runtime_error with a sentence for the user.
  explicit Module(const std::string& path);
  ~Module();
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  // Null when the library has no such function.
  Function Find(const char* name, int ordinal) const;
  // The file that was opened, with its folder.
  std::string Path() const;
  // The version that the file's own resources give, as four numbers with points; empty when they give none.
  std::string FileVersion() const;

 private:
  void* handle;
};

}  // namespace kest_host
