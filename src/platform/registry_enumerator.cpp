#include "platform/registry_enumerator.h"

#include <algorithm>

#include "core/memory.h"

namespace kest {
namespace {

constexpr std::uint32_t nameRoom = 65535;  // characters, the NUL among them

}  // namespace

RegistryEnumerator::RegistryEnumerator(const RegistryKey& walked, RegistryItems wanted)
    : key(walked.Handle()), items(wanted), nameArea(static_cast<char*>(Allocate(nameRoom))) {}

RegistryEnumerator::~RegistryEnumerator() { Release(nameArea); }

String RegistryEnumerator::Next() {
  hasReachedEnd = false;
  // The index has 16 bits: behind 65535 it stands at 0 again, and the walk over so many items would never end.
  if (hasWrapped) return String();
  std::uint32_t characters = nameRoom;
  const std::int32_t result = ReadName(&characters);
  hasWrapped = ++index == 0;
  hasReachedEnd = result == os::errorNoMoreItems;
  if (result != os::errorSuccess) return String();
  return String(nameArea, std::min(characters, nameRoom - 1));
}

std::int32_t RegistryEnumerator::ReadName(std::uint32_t* characters) {
  if (items == RegistryItems::subkeys) return os::system->RegEnumKeyExA(key, index, nameArea, characters);
  return os::system->RegEnumValueA(key, index, nameArea, characters);
}

}  // namespace kest
