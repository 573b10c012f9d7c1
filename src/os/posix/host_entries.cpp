#include "os/posix/host_entries.h"

#include <pthread.h>

#include <cstdint>
#include <cstdlib>

namespace os::posix {
namespace {

// One block holds this, the entry's pointers and its addresses.
struct Block {
  Block* previous;
  Block* next;
  HostEntry entry;
};

void FreeBlock(void* block);

// All blocks there are, and the key under which each thread finds its own. A thread_local object would do the same, but
// its registration keeps a library in the process until the thread ends.
class Blocks {
 public:
  Blocks() : hasKey(pthread_key_create(&key, FreeBlock) == 0) { pthread_mutex_init(&lock, nullptr); }
  Blocks(const Blocks&) = delete;
  Blocks& operator=(const Blocks&) = delete;
  ~Blocks() {
    if (hasKey) pthread_key_delete(key);
    while (first != nullptr) Remove(first);
    pthread_mutex_destroy(&lock);
  }

  Block* Renew(std::size_t bytes) {
    if (!hasKey) return nullptr;
    if (auto* old = static_cast<Block*>(pthread_getspecific(key))) Remove(old);
    pthread_setspecific(key, nullptr);
    auto* block = static_cast<Block*>(std::malloc(bytes));
    if (block == nullptr) return nullptr;
    if (pthread_setspecific(key, block) != 0) {
      std::free(block);
      return nullptr;
    }
    pthread_mutex_lock(&lock);
    block->previous = nullptr;
    block->next = first;
    if (first != nullptr) first->previous = block;
    first = block;
    pthread_mutex_unlock(&lock);
    return block;
  }

  void Remove(Block* block) {
    pthread_mutex_lock(&lock);
    (block->previous != nullptr ? block->previous->next : first) = block->next;
    if (block->next != nullptr) block->next->previous = block->previous;
    pthread_mutex_unlock(&lock);
    std::free(block);
  }

 private:
  pthread_key_t key{};
  bool hasKey;
  pthread_mutex_t lock;
  Block* first = nullptr;
};

Blocks blocks;

// A thread that ends gives back its own.
void FreeBlock(void* block) { blocks.Remove(static_cast<Block*>(block)); }

}  // namespace

HostEntry* RenewHostEntry(std::size_t count) {
  Block* block = blocks.Renew(sizeof(Block) + (count + 1) * sizeof(char*) + count * sizeof(std::uint32_t));
  if (block == nullptr) return nullptr;
  HostEntry& entry = block->entry;
  entry = HostEntry{};
  entry.addressType = addressFamilyInet;
  entry.length = sizeof(std::uint32_t);
  entry.addresses = reinterpret_cast<char**>(block + 1);
  auto* storage = reinterpret_cast<char*>(entry.addresses + count + 1);
  for (std::size_t i = 0; i < count; ++i) entry.addresses[i] = storage + i * sizeof(std::uint32_t);
  entry.addresses[count] = nullptr;
  return &entry;
}

}  // namespace os::posix
