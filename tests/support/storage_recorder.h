// A system that writes down what is done with blocks and locks, one word after another: "alloc", "init A", "enter A",
// "leave A", "delete A", "free". Locks are named in the order of their making. It also looks whether a block of text
// was wiped before it was freed, and how many bytes were last asked for. New blocks hold no zero
// bytes.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <set>
#include <string>
#include <utility>

#include "core/shared_storage.h"
#include "support/forwarding_system.h"

namespace kest::testing {

class StorageRecorder : public ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  // What happened since the last call.
  std::string Events() { return std::exchange(events, std::string()); }
  std::size_t LastSize() const { return lastSize; }
  // Texts that were freed, and those of them that had a byte other than zero left.
  int Freed() const { return freed; }
  int Unwiped() const { return unwiped; }
  void Refuse(bool refuse) { refusing = refuse; }

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    Note("alloc");
    lastSize = bytes;
    if (refusing) return nullptr;
    void* block = ForwardingSystem::GlobalAlloc(flags, bytes);
    // No block is clear by chance.
    std::memset(block, 0xCD, bytes);
    sizes[block] = bytes;
    return block;
  }
  void GlobalFree(void* block) override {
    Note("free");
    if (texts.erase(block) != 0) {
      ++freed;
      const char* bytes = static_cast<StringData*>(block)->Characters();
      const std::size_t length = sizes[block] - sizeof(StringData);
      if (std::any_of(bytes, bytes + length, [](char byte) { return byte != '\0'; })) ++unwiped;
    }
    sizes.erase(block);
    ForwardingSystem::GlobalFree(block);
  }
  void InitializeCriticalSection(os::CriticalSection* lock) override {
    names[lock] = std::string(1, next++);
    Note("init " + names[lock]);
    // A block that has a lock in its header is a text's.
    texts.insert(reinterpret_cast<char*>(lock) - offsetof(StringData, lock));
    ForwardingSystem::InitializeCriticalSection(lock);
  }
  void EnterCriticalSection(os::CriticalSection* lock) override {
    Note("enter " + names[lock]);
    ForwardingSystem::EnterCriticalSection(lock);
  }
  void LeaveCriticalSection(os::CriticalSection* lock) override {
    Note("leave " + names[lock]);
    ForwardingSystem::LeaveCriticalSection(lock);
  }
  void DeleteCriticalSection(os::CriticalSection* lock) override {
    Note("delete " + names[lock]);
    names.erase(lock);
    ForwardingSystem::DeleteCriticalSection(lock);
  }

 private:
  void Note(const std::string& event) { events += (events.empty() ? "" : ", ") + event; }

  std::string events;
  std::map<void*, std::string> names;
  std::map<void*, std::size_t> sizes;
  std::set<void*> texts;
  char next = 'A';
  std::size_t lastSize = 0;
  int unwiped = 0;
  int freed = 0;
  bool refusing = false;
};

}  // namespace kest::testing
