// Texts and objects that are made on one thread and used up on another, while others share their storage.
#include <gtest/gtest.h>
#include <kestapi.h>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <string>
#include <utility>

#include "core/byte_buffer.h"
#include "core/field_set.h"
#include "core/string.h"
#include "support/forwarding_system.h"
#include "support/storage_inspection.h"
#include "threads/together.h"

namespace kest::testing {
namespace {

// What one thread hands to another.
template <typename Item>
class Mailbox {
 public:
  void Put(Item item) {
    const std::lock_guard<std::mutex> lock(mutex);
    items.push_back(std::move(item));
    arrived.notify_one();
  }
  Item Take() {
    std::unique_lock<std::mutex> lock(mutex);
    arrived.wait(lock, [this] { return !items.empty(); });
    Item item = std::move(items.front());
    items.pop_front();
    return item;
  }

 private:
  std::mutex mutex;
  std::condition_variable arrived;
  std::deque<Item> items;
};

// Each thread marks a copy of the text and hands the copy on; what it took in before is dropped where it arrived.
TEST(HandedOver, CopiesChangedByTheThreadThatTookThemLeaveTheSourceAlone) {
  constexpr int rounds = 2000;
  const String source(Sample(70).c_str());
  Mailbox<String> mailboxes[threadCount];
  std::atomic<int> wrong{0};
  Together([&](int which) {
    const std::string mark(1, static_cast<char>('0' + which));
    const std::string before(1, static_cast<char>('0' + (which + threadCount - 1) % threadCount));
    for (int round = 0; round < rounds; ++round) {
      String copy(source);
      const String unchanged(copy);
      copy.Append(mark.c_str());
      mailboxes[(which + 1) % threadCount].Put(copy);
      const String taken = mailboxes[which].Take();
      if (Content(taken) != Sample(70) + before || Content(unchanged) != Sample(70)) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(1u, ReferencesOf(source));
  EXPECT_EQ(Sample(70), Content(source));
}

// Counts the blocks that are out, from any thread.
class CountingMemory : public ForwardingSystem {
 public:
  std::atomic<std::int64_t> outstanding{0};

  void* GlobalAlloc(std::uint32_t flags, std::size_t bytes) override {
    ++outstanding;
    return ForwardingSystem::GlobalAlloc(flags, bytes);
  }
  void GlobalFree(void* block) override {
    if (block != nullptr) --outstanding;
    ForwardingSystem::GlobalFree(block);
  }
};

// The first thread gives every other one an owner of the same block; all let go as fast as they can.
TEST(HandedOver, BlockOfManyOwnersIsFreedOnceByTheLast) {
  CountingMemory memory;
  const SystemInForce inForce(memory);
  Mailbox<String> mailboxes[threadCount];
  std::atomic<int> wrong{0};
  Together([&](int which) {
    for (int round = 0; round < 3000; ++round) {
      if (which == 0) {
        const String made(Sample(30).c_str());
        for (int other = 1; other < threadCount; ++other) mailboxes[other].Put(made);
      } else if (Content(mailboxes[which].Take()) != Sample(30)) {
        ++wrong;
      }
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(0, memory.outstanding);
}

TEST(HandedOver, BytesThatThreadsShareAreCopiedByThoseThatChangeThem) {
  const std::string content(150, 'b');
  const ByteBuffer source(content.data(), 150);
  std::atomic<int> wrong{0};
  Together([&](int which) {
    for (int round = 0; round < 3000; ++round) {
      ByteBuffer copy(source);
      const std::string tail(1, static_cast<char>(which));
      copy.Append(tail.data(), 1);
      if (copy.Length() != 151 || copy.Bytes()[150] != which || source.Length() != 150) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(content, std::string(reinterpret_cast<const char*>(source.Bytes()), source.Length()));
}

// The sets share every text; each thread copies its own set's fields into a set of the host and changes both.
TEST(HandedOver, FieldsCopiedThroughTheExportsStayWhatTheyWere) {
  FieldSet source;
  for (int i = 0; i < 20; ++i) source.Add(("name " + std::to_string(i)).c_str(), Sample(60).c_str());
  std::atomic<int> wrong{0};
  Together([&](int which) {
    const std::string mine = "of thread " + std::to_string(which);
    for (int round = 0; round < 200; ++round) {
      FieldSet sharing(source);
      auto* own = reinterpret_cast<KestFieldSet*>(&sharing);
      KestFieldSet* copy = KestCreateFieldSet();
      for (int i = 0; i < KestGetFieldCount(own); ++i) {
        KestAddField(copy, KestGetFieldName(own, i), KestGetFieldValue(own, i));
        KestSetField(own, KestGetFieldName(own, i), mine.c_str());
      }
      if (KestGetField(copy, "name 19") != Sample(60) || KestGetField(own, "name 19") != mine) ++wrong;
      KestFreeFieldSet(copy);
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(Sample(60), source.Get("name 0").Text());
  EXPECT_EQ(1u, ReferencesOf(source.Fields().At(0).Value()));
}

TEST(HandedOver, ObjectsAreDestroyedOnAnotherThreadThanTheirMakers) {
  Mailbox<KestCheckout*> mailboxes[threadCount];
  std::atomic<int> wrong{0};
  Together([&](int which) {
    for (int round = 0; round < 300; ++round) {
      KestCheckout* made = KestCreateCheckout();
      KestSetField(KEST_FIELDS(made), "maker", std::to_string(which).c_str());
      KestAddOrderLine(made, static_cast<std::uint32_t>(which), 1);
      mailboxes[(which + 1) % threadCount].Put(made);
      KestCheckout* taken = mailboxes[which].Take();
      const std::string maker = std::to_string((which + threadCount - 1) % threadCount);
      if (KestGetField(KEST_FIELDS(taken), "maker") != maker) ++wrong;
      KestSetField(KEST_FIELDS(taken), "maker", "another");
      KestClearOrder(taken);
      KestDestroyCheckout(taken);
    }
  });
  EXPECT_EQ(0, wrong);
}

}  // namespace
}  // namespace kest::testing
