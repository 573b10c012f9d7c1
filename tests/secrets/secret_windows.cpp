#include "secrets/secret_windows.h"

#include <algorithm>
#include <cstring>
#include <istream>
#include <ostream>
#include <sstream>

#include "core/memory.h"

namespace kest::testing {
namespace {

constexpr unsigned filterBits = 24;

bool IsZero(const unsigned char* bytes) {
  std::uint64_t low, high;
  std::memcpy(&low, bytes, 8);
  std::memcpy(&high, bytes + 8, 8);
  return (low | high) == 0;
}

// 64 bits of 16 bytes: among the millions of places of one search a false alarm is less likely than one in a million.
std::uint64_t HashOf(const unsigned char* bytes) {
  std::uint64_t low, high;
  std::memcpy(&low, bytes, 8);
  std::memcpy(&high, bytes + 8, 8);
  std::uint64_t hash = (low ^ 0x243F6A8885A308D3) * 0x9E3779B97F4A7C15;
  hash = ((hash ^ hash >> 32) + (high ^ 0x13198A2E03707344)) * 0xBF58476D1CE4E5B9;
  hash = (hash ^ hash >> 29) * 0x94D049BB133111EB;
  return hash ^ hash >> 32;
}

// Takes the bytes out of the region that they lie in, of which what is in front of them and behind them stays.
template <typename Element>
void TakeOut(const std::vector<Element>& own, std::vector<Region>& regions) {
  const auto* begin = reinterpret_cast<const unsigned char*>(own.data());
  const unsigned char* end = begin + own.size() * sizeof(Element);
  for (Region& region : regions) {
    const unsigned char* regionEnd = region.begin + region.length;
    if (begin < region.begin || end > regionEnd) continue;
    const Region behind = {end, static_cast<std::size_t>(regionEnd - end), region.name};
    region.length = static_cast<std::size_t>(begin - region.begin);
    regions.push_back(behind);
    return;
  }
}

bool IsTelling(const unsigned char* bytes) {
  int different = 0;
  for (std::size_t i = 0; i < SecretWindows::windowLength && different < 4; ++i) {
    different += bytes[i] != 0 && std::find(bytes, bytes + i, bytes[i]) == bytes + i ? 1 : 0;
  }
  return different >= 4;
}

}  // namespace

SecretWindows::~SecretWindows() {
  Wipe(windows.data(), windows.size() * sizeof(Window));
  Wipe(filter.data(), filter.size() * sizeof filter[0]);
}

void SecretWindows::Add(const std::string& name, const void* secret, std::size_t length) {
  const auto* bytes = static_cast<const unsigned char*>(secret);
  const auto found = std::find(names.begin(), names.end(), name);
  const auto number = static_cast<std::uint32_t>(found - names.begin());
  if (found == names.end()) names.push_back(name);
  for (std::size_t at = 0; at + windowLength <= length; ++at) {
    if (IsTelling(bytes + at)) windows.push_back({HashOf(bytes + at), number, static_cast<std::uint32_t>(at)});
  }
}

void SecretWindows::Remove(const std::string& text) {
  for (std::size_t at = 0; at + windowLength <= text.size(); ++at) {
    const std::uint64_t hash = HashOf(reinterpret_cast<const unsigned char*>(text.data()) + at);
    const auto isIt = [hash](const Window& window) { return window.hash == hash; };
    windows.erase(std::remove_if(windows.begin(), windows.end(), isIt), windows.end());
  }
}

void SecretWindows::Index() {
  const auto isBefore = [](const Window& a, const Window& b) { return a.hash < b.hash; };
  const auto isSame = [](const Window& a, const Window& b) { return a.hash == b.hash; };
  std::stable_sort(windows.begin(), windows.end(), isBefore);
  windows.erase(std::unique(windows.begin(), windows.end(), isSame), windows.end());
  MakeFilter();
}

void SecretWindows::MakeFilter() {
  filter.assign(std::size_t{1} << (filterBits - 6), 0);
  for (const Window& window : windows) {
    const std::uint64_t bit = window.hash >> (64 - filterBits);
    filter[static_cast<std::size_t>(bit / 64)] |= std::uint64_t{1} << bit % 64;
  }
}

void SecretWindows::Write(std::ostream& file) {
  Index();
  file << names.size() << "\n";
  for (const std::string& name : names) file << name << "\n";
  file << windows.size() << "\n";
  // As they lie in memory: both programs are of one build.
  file.write(reinterpret_cast<const char*>(windows.data()), static_cast<std::streamsize>(windows.size() * sizeof(Window)));
}

void SecretWindows::Read(std::istream& file) {
  std::size_t count = 0;
  file >> count >> std::ws;
  names.resize(count);
  for (std::string& name : names) std::getline(file, name);
  file >> count;
  windows.resize(count);
  file.get();
  file.read(reinterpret_cast<char*>(windows.data()), static_cast<std::streamsize>(count * sizeof(Window)));
  MakeFilter();
}

std::string SecretWindows::FindAnywhere(const std::string& except) const {
  std::vector<Region> regions = WritableRegions();
  TakeOut(windows, regions);
  TakeOut(filter, regions);
  return Find(regions, except);
}

std::string SecretWindows::Find(const std::vector<Region>& regions, const std::string& except) const {
  std::ostringstream found;
  const unsigned char* last = nullptr;
  for (const Region& region : regions) {
    const unsigned char* end = region.begin + region.length;
    for (const unsigned char* at = region.begin; at + windowLength <= end; ++at) {
      if (IsZero(at)) {
        // The next three windows have 13 of these zeros and cannot have 4 other bytes.
        at += 3;
        continue;
      }
      const std::uint64_t hash = HashOf(at);
      const std::uint64_t bit = hash >> (64 - filterBits);
      if ((filter[static_cast<std::size_t>(bit / 64)] >> bit % 64 & 1) == 0) continue;
      const auto isBefore = [](const Window& window, std::uint64_t value) { return window.hash < value; };
      const auto window = std::lower_bound(windows.begin(), windows.end(), hash, isBefore);
      if (window == windows.end() || window->hash != hash) continue;
      const std::string& name = names[window->name];
      if (!except.empty() && name.compare(0, except.size(), except) == 0) continue;
      // One line for windows that follow each other.
      if (at != last + 1) {
        found << name << " from " << window->offset << " at " << static_cast<const void*>(at) << " in "
              << region.name << "\n";
      }
      last = at;
    }
  }
  return found.str();
}

}  // namespace kest::testing
