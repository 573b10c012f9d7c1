#include "platform/registry_enumerator.h"

#include <string>
#include <vector>

#include "core/exception.h"
#include "support/registry_fixture.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::Content;

class RegistryEnumeratorTest : public testing::RegistryTest {
 protected:
  void Open() { ASSERT_TRUE(key.Open(os::CurrentUser(), "Shop", os::keyRead)); }
  static std::vector<std::string> Walk(RegistryEnumerator& walk) {
    std::vector<std::string> names;
    for (String name = walk.Next(); !name.IsEmpty(); name = walk.Next()) names.push_back(Content(name));
    return names;
  }

  RegistryKey key;
};

TEST_F(RegistryEnumeratorTest, SubkeysThenTheirNamesInTheRegistrysOrder) {
  registry.Put("HKCU\\Shop\\3-7-1998");
  registry.Put("HKCU\\Shop\\12-1-1997");
  registry.Put("HKCU\\Shop", "Value", "data");
  Open();
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  EXPECT_FALSE(walk.HasReachedEnd());
  EXPECT_EQ((std::vector<std::string>{"3-7-1998", "12-1-1997"}), Walk(walk));
  EXPECT_TRUE(walk.HasReachedEnd());
}

TEST_F(RegistryEnumeratorTest, ValuesThenTheirNamesInTheRegistrysOrder) {
  registry.Put("HKCU\\Shop\\Subkey");
  registry.Put("HKCU\\Shop", "Tool", "19.95");
  registry.Put("HKCU\\Shop", "Axe", "5");
  Open();
  RegistryEnumerator walk(key, RegistryItems::values);
  EXPECT_EQ((std::vector<std::string>{"Tool", "Axe"}), Walk(walk));
  EXPECT_TRUE(walk.HasReachedEnd());
}

TEST_F(RegistryEnumeratorTest, ItemWithoutANameThenTheWalkEndsThere) {
  registry.Put("HKCU\\Shop", "Tool", "19.95");
  registry.Put("HKCU\\Shop", "", "default");
  registry.Put("HKCU\\Shop", "Axe", "5");
  Open();
  RegistryEnumerator walk(key, RegistryItems::values);
  EXPECT_EQ((std::vector<std::string>{"Tool"}), Walk(walk));
  EXPECT_FALSE(walk.HasReachedEnd());
}

TEST_F(RegistryEnumeratorTest, AnItemCannotBeReadThenAnEmptyNameAndTheNextOneFollows) {
  for (const char* name : {"A", "B", "C"}) registry.Put(std::string("HKCU\\Shop\\") + name);
  registry.refusals["key 1 of HKCU\\Shop"] = os::errorAccessDenied;
  Open();
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  EXPECT_EQ("A", Content(walk.Next()));
  EXPECT_TRUE(walk.Next().IsEmpty());
  EXPECT_FALSE(walk.HasReachedEnd());
  EXPECT_EQ("C", Content(walk.Next()));
}

TEST_F(RegistryEnumeratorTest, BehindTheEndThenTheIndexStillMovesOn) {
  registry.Put("HKCU\\Shop\\A");
  Open();
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  for (int i = 0; i < 3; ++i) walk.Next();
  EXPECT_EQ("key 2 of HKCU\\Shop", registry.calls.back());
  EXPECT_TRUE(walk.HasReachedEnd());
  // Two that came in the meantime lie before the index, the fourth at it.
  for (const char* name : {"B", "C", "D"}) registry.Put(std::string("HKCU\\Shop\\") + name);
  EXPECT_EQ("D", Content(walk.Next()));
  EXPECT_FALSE(walk.HasReachedEnd());
}

TEST_F(RegistryEnumeratorTest, IndexRunsOutBehindTheEndThenTheWalkHasFailed) {
  registry.Put("HKCU\\Shop");
  Open();
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  for (int i = 0; i < 65536; ++i) walk.Next();
  EXPECT_TRUE(walk.HasReachedEnd());
  EXPECT_TRUE(walk.Next().IsEmpty());
  EXPECT_FALSE(walk.HasReachedEnd());
  EXPECT_EQ("key 65535 of HKCU\\Shop", registry.calls.back());
}

TEST_F(RegistryEnumeratorTest, LongNameThenAllOfIt) {
  const std::string name(16383, 'n');
  registry.Put("HKCU\\Shop", name, "data");
  Open();
  RegistryEnumerator walk(key, RegistryItems::values);
  EXPECT_EQ(name, Content(walk.Next()));
}

TEST_F(RegistryEnumeratorTest, WalkThenOneAreaForAllNames) {
  for (const char* name : {"A", "B", "C"}) registry.Put(std::string("HKCU\\Shop\\") + name);
  Open();
  memory.Restart();
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  Walk(walk);
  EXPECT_EQ(4u, memory.Allocations());
}

TEST_F(RegistryEnumeratorTest, NoMemoryThenTheExceptionAndNothingIsLeftBehind) {
  registry.Put("HKCU\\Shop\\A");
  Open();
  for (std::uint64_t point = 1; point <= 2; ++point) {
    memory.FailAt(point, testing::AllocationSystem::Failing::once);
    const auto walkOn = [&] { RegistryEnumerator(key, RegistryItems::subkeys).Next(); };
    EXPECT_THROW(walkOn(), Qor::MemoryException);
    EXPECT_EQ(0, memory.Outstanding()) << "left behind when allocation " << point << " failed";
  }
}

// Has the same item at every index, and says how much room there was for its name.
class EndlessRegistry : public testing::ForwardingSystem {
 public:
  std::int32_t RegEnumKeyExA(os::RegistryHandle, std::uint32_t index, char* name, std::uint32_t* characters) override {
    lastIndex = index;
    room = *characters;
    ++count;
    name[0] = 'n', name[1] = '\0';
    *characters = 1;
    return os::errorSuccess;
  }

  std::uint32_t lastIndex = 0, room = 0, count = 0;
};

TEST(RegistryEnumeratorEndTest, MoreItemsThanTheIndexCountsThenTheWalkFails) {
  EndlessRegistry registry;
  testing::SystemInForce inForce(registry);
  const RegistryKey key;
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  std::uint32_t names = 0;
  while (names < 70000 && !walk.Next().IsEmpty()) ++names;
  EXPECT_EQ(65536u, names);
  EXPECT_EQ(65535u, registry.lastIndex);
  EXPECT_FALSE(walk.HasReachedEnd());
  EXPECT_TRUE(walk.Next().IsEmpty());
  EXPECT_EQ(65536u, registry.count);
}

TEST(RegistryEnumeratorEndTest, EveryNameThenRoomFor65535Characters) {
  EndlessRegistry registry;
  testing::SystemInForce inForce(registry);
  const RegistryKey key;
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  for (int i = 0; i < 2; ++i) {
    EXPECT_EQ("n", Content(walk.Next()));
    EXPECT_EQ(65535u, registry.room);
  }
}

}  // namespace
}  // namespace kest
