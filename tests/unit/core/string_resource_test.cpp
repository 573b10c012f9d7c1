// String: texts from the module's string table, which a system of the test's own holds.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <string>
#include <vector>

#include "core/string.h"
#include "support/forwarding_system.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::Content;
using testing::ForwardingSystem;
using testing::Sample;
using testing::SystemInForce;

class StringTable : public ForwardingSystem {
 public:
  std::map<std::uint32_t, std::string> texts;
  std::vector<int> capacities;  // one a call
  os::ModuleHandle lastModule = nullptr;

  int LoadStringA(os::ModuleHandle module, std::uint32_t id, char* buffer, int capacity) override {
    lastModule = module;
    capacities.push_back(capacity);
    // All of the area is the callee's.
    std::memset(buffer, '?', static_cast<std::size_t>(capacity));
    const auto found = texts.find(id);
    if (found == texts.end()) return 0;
    const int count = std::min(static_cast<int>(found->second.size()), capacity - 1);
    std::memcpy(buffer, found->second.data(), static_cast<std::size_t>(count));
    buffer[count] = '\0';
    return count;
  }
};

class StringResource : public ::testing::Test {
 protected:
  // Loads a text of `length` characters and answers the areas that it took.
  std::vector<int> AreasFor(std::uint32_t length) {
    table.texts[7] = Sample(length);
    table.capacities.clear();
    String text("before");
    text.LoadResource(&table, 7);
    EXPECT_EQ(Sample(length), Content(text));
    EXPECT_EQ(length, text.Length());
    return table.capacities;
  }

  StringTable table;
  SystemInForce inForce{table};
};

TEST_F(StringResource, AShortTextTakesOneArea) {
  EXPECT_EQ(std::vector<int>({256}), AreasFor(5));
  EXPECT_EQ(&table, table.lastModule);
}

TEST_F(StringResource, TwoHundredFiftyFourCharactersTakeOneArea) {
  EXPECT_EQ(std::vector<int>({256}), AreasFor(254));
}

TEST_F(StringResource, ExactlyTwoHundredFiftyFiveCharactersTakeTheRetry) {
  EXPECT_EQ(std::vector<int>({256, 512}), AreasFor(255));
}

TEST_F(StringResource, FiveHundredTenCharactersTakeTwoAreasAndOneMoreTakesThree) {
  EXPECT_EQ(std::vector<int>({256, 512}), AreasFor(510));
  EXPECT_EQ(std::vector<int>({256, 512, 768}), AreasFor(511));
}

TEST_F(StringResource, ALongTextIsWhole) {
  EXPECT_EQ(std::vector<int>({256, 512, 768, 1024, 1280}), AreasFor(1200));
}

TEST_F(StringResource, AMissingTextEmptiesTheString) {
  String text("before");
  text.LoadResource(nullptr, 8);
  EXPECT_TRUE(text.IsEmpty());
  EXPECT_NE(nullptr, text.Characters());
  const String other("before");
  String shared(other);
  shared.LoadResource(nullptr, 8);
  EXPECT_EQ(nullptr, shared.Characters());
  EXPECT_STREQ("before", other.Characters());
}

}  // namespace
}  // namespace kest
