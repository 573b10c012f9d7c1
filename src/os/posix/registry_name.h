// Where the name of a key or value lies on disk: one name, in whatever case its letters are, has one file name, so that
// looking it up needs neither a scan nor a lock. docs/registry.md describes the form. Any thread may call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace os::posix {

constexpr std::size_t longestKeyName = 255;
constexpr std::size_t longestValueName = 16383;

// Marks that begin file names; the name of a key begins with none of them.
constexpr char valueMark = '=';
constexpr char ownMark = '.';  // what the store keeps for itself: names of keys, files being written

struct FileName {
  char text[256];  // ended by a NUL
  bool isCut;      // too long to stand whole: the end is a hash, and what lies there must tell its own name
};

FileName FileNameOfKey(std::string_view name);
FileName FileNameOfValue(std::string_view name);

// The name that a key's file name stands for, its letters small, put into `name`; empty when the file name is cut or
// not in canonical form.
std::string_view NameOfKeyFile(std::string_view file, char (&name)[256]);

// Whether a key or value may have this name.
bool IsKeyName(std::string_view name);
bool IsValueName(std::string_view name);

// Compare without regard to the case of A to Z; the order is that of the bytes with these letters made capital.
bool IsSameName(std::string_view left, std::string_view right);
bool ComesBefore(std::string_view left, std::string_view right);

// FNV-1a with 64 bits, continued from `hash`.
constexpr std::uint64_t emptyHash = 0xCBF29CE484222325u;
constexpr std::uint64_t HashOf(std::uint8_t byte, std::uint64_t hash) {
  return (hash ^ byte) * 0x100000001B3u;
}
std::uint64_t HashOf(std::string_view bytes, std::uint64_t hash = emptyHash);

}  // namespace os::posix
