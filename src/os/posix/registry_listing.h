// The names of a key's subkeys or values as they were at one moment, in the order in which Windows lists them. One
// thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace os::posix {

class Listing {
 public:
  Listing() = default;
  Listing(const Listing&) = delete;
  Listing& operator=(const Listing&) = delete;
  ~Listing() { Clear(); }

  bool IsTaken() const { return isTaken; }
  std::size_t Count() const { return count; }
  std::string_view Name(std::size_t index) const;

  // Take the names anew from a key's open directory. A failure leaves none taken.
  std::int32_t TakeKeys(int directory);
  std::int32_t TakeValues(int directory);

 private:
  struct Entry;

  std::int32_t Take(int directory, bool ofValues);
  std::int32_t AddKey(int directory, std::string_view file);
  std::int32_t AddValue(int directory, const char* file);
  std::int32_t Add(std::string_view name);
  std::int32_t Sort();
  void Clear();

  Entry* first = nullptr;
  Entry** sorted = nullptr;
  std::size_t count = 0;
  bool isTaken = false;
};

}  // namespace os::posix
