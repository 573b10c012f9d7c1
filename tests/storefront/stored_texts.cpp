#include "stored_texts.h"

#include <windows.h>

#include <filesystem>
#include <fstream>
#include <iterator>

namespace storefront_test {
namespace {

std::string InWideBytes(const std::string& text) {
  std::string wide;
  for (const char character : text) wide += {character, '\0'};
  return wide;
}

bool Holds(const std::string& bytes, const std::string& text) {
  return bytes.find(text) != std::string::npos || bytes.find(InWideBytes(text)) != std::string::npos;
}

bool HasValueWith(HKEY key, const std::string& text) {
  std::string name(16384, '\0'), data(1 << 16, '\0');
  for (DWORD index = 0;; ++index) {
    auto nameSize = static_cast<DWORD>(name.size()), dataSize = static_cast<DWORD>(data.size());
    const LONG result = RegEnumValueA(key, index, name.data(), &nameSize, nullptr, nullptr,
                                      reinterpret_cast<BYTE*>(data.data()), &dataSize);
    if (result == ERROR_NO_MORE_ITEMS) return false;
    if (result != ERROR_SUCCESS) continue;
    if (Holds(name.substr(0, nameSize), text) || Holds(data.substr(0, dataSize), text)) return true;
  }
}

void Search(HKEY parent, const std::string& name, const std::string& path, const std::string& text,
            std::vector<std::string>& found) {
  HKEY key;
  if (RegOpenKeyExA(parent, name.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  if (Holds(name, text) || HasValueWith(key, text)) found.push_back(path);
  char child[256];
  for (DWORD index = 0; RegEnumKeyA(key, index, child, sizeof child) == ERROR_SUCCESS; ++index) {
    Search(key, child, path + "\\" + child, text, found);
  }
  RegCloseKey(key);
}

}  // namespace

std::vector<std::string> FilesWith(const std::string& folder, const std::string& text) {
  std::vector<std::string> found;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    if (!entry.is_regular_file()) continue;
    std::ifstream file(entry.path(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (Holds(bytes, text) || Holds(entry.path().string(), text)) found.push_back(entry.path().string());
  }
  return found;
}

std::vector<std::string> KeysWith(const std::string& text) {
  std::vector<std::string> found;
  Search(HKEY_CURRENT_USER, "", "HKCU", text, found);
  return found;
}

}  // namespace storefront_test
