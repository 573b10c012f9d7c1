// Secrets in a form that does not give them away: a hash of every run of 16 bytes, under the secret's name. What is
// looked for is never in the memory of the process that looks for it, unless the library left it there.
#pragma once

#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "secrets/memory_regions.h"

namespace kest::testing {

class SecretWindows {
 public:
  SecretWindows() = default;
  SecretWindows(const SecretWindows&) = default;
  SecretWindows& operator=(const SecretWindows&) = default;
  // Leaves zeros in the heap: random bytes would slow down every later search.
  ~SecretWindows();

  // Adds every window of a secret, but those of fewer than 4 different bytes beside zero: all memory is full of them, and
  // counters come to have any value. A window that is there already keeps the name that it has.
  void Add(const std::string& name, const void* secret, std::size_t length);
  void Add(const std::string& name, const std::string& secret) { Add(name, secret.data(), secret.size()); }

  // Takes the windows of what is no secret out again.
  void Remove(const std::string& text);

  void Write(std::ostream& file);
  void Read(std::istream& file);
  // Makes what was added findable; writing does it too, and what was read is.
  void Index();

  // What was found where, one line a place; empty for nothing. Names that begin with `except` are not looked for.
  std::string Find(const std::vector<Region>& regions, const std::string& except = {}) const;
  // The same in all memory that this process can write, but for the hashes themselves: they are most of it, and nobody
  // else writes there.
  std::string FindAnywhere(const std::string& except = {}) const;

  static constexpr std::size_t windowLength = 16;  // bytes

 private:
  void MakeFilter();

  struct Window {
    std::uint64_t hash;
    std::uint32_t name, offset;
  };

  std::vector<std::string> names;
  std::vector<Window> windows;       // by hash, once indexed
  std::vector<std::uint64_t> filter;  // one bit for the top bits of each hash
};

}  // namespace kest::testing
