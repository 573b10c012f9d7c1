// Do the wrappers get from the real registry what they get from the one in memory?
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "platform/files.h"
#include "platform/registry_enumerator.h"
#include "platform/registry_key.h"
#include "support/redirected_registry.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::Content;

class NativeRegistryTest : public ::testing::Test {
 protected:
  ~NativeRegistryTest() override { EXPECT_EQ(0, registry.OpenHandles()); }

  std::vector<std::string> Names(const RegistryKey& key, RegistryItems items) {
    std::vector<std::string> names;
    RegistryEnumerator walk(key, items);
    for (String name = walk.Next(); !name.IsEmpty(); name = walk.Next()) names.push_back(Content(name));
    EXPECT_TRUE(walk.HasReachedEnd());
    std::sort(names.begin(), names.end());
    return names;
  }

  testing::RedirectedRegistry registry;
  testing::SystemInForce inForce{registry};
};

TEST_F(NativeRegistryTest, KeyThatIsMissingThenItOpensOnceItWasCreated) {
  RegistryKey key;
  EXPECT_FALSE(key.Open(os::CurrentUser(), "Shop\\A", os::keyRead));
  EXPECT_TRUE(key.Create(os::CurrentUser(), "Shop\\A", os::keyAllAccess));
  EXPECT_TRUE(key.Open(os::CurrentUser(), "Shop\\A", os::keyRead));
  EXPECT_TRUE(key.Open(os::CurrentUser(), "shop", os::keyRead));
}

TEST_F(NativeRegistryTest, ValuesSetThenTheyAreReadBack) {
  RegistryKey key;
  ASSERT_TRUE(key.Create(os::CurrentUser(), "Shop", os::keyAllAccess));
  EXPECT_TRUE(key.SetString("Text", "19.95"));
  EXPECT_TRUE(key.SetString("Empty", ""));
  EXPECT_TRUE(key.SetNumber("Number", 0x80030201));
  EXPECT_TRUE(key.SetBytes("Bytes", ByteBuffer("ab\0c", 4)));
  EXPECT_TRUE(key.SetBytes("None", ByteBuffer()));
  EXPECT_EQ("19.95", Content(key.QueryString("Text")));
  EXPECT_EQ("", Content(key.QueryString("Empty")));
  EXPECT_EQ(0x80030201u, key.QueryNumber("Number"));
  EXPECT_EQ("ab", Content(key.QueryString("Bytes")));
  EXPECT_EQ("", Content(key.QueryString("None")));
  EXPECT_EQ(0u, key.QueryNumber("None"));
}

TEST_F(NativeRegistryTest, LongTextThenAllOfIt) {
  RegistryKey key;
  ASSERT_TRUE(key.Create(os::CurrentUser(), "Shop", os::keyAllAccess));
  const std::string text(100000, 'x');
  EXPECT_TRUE(key.SetString("Text", text.c_str()));
  EXPECT_EQ(text, Content(key.QueryString("Text")));
}

TEST_F(NativeRegistryTest, MissingValueThenTheFailureResults) {
  RegistryKey key;
  ASSERT_TRUE(key.Create(os::CurrentUser(), "Shop", os::keyAllAccess));
  EXPECT_EQ("", Content(key.QueryString("Missing")));
  EXPECT_EQ(4294967295u, key.QueryNumber("Missing"));
}

TEST_F(NativeRegistryTest, ValueOfTheWrongLengthReadAsANumberThenZerosOrTheFailure) {
  RegistryKey key;
  ASSERT_TRUE(key.Create(os::CurrentUser(), "Shop", os::keyAllAccess));
  key.SetBytes("Short", ByteBuffer("\1\2", 2));
  key.SetBytes("Long", ByteBuffer("\1\2\3\4\5", 5));
  EXPECT_EQ(0x0201u, key.QueryNumber("Short"));
  EXPECT_EQ(4294967295u, key.QueryNumber("Long"));
}

TEST_F(NativeRegistryTest, NothingOpenThenEveryOperationFails) {
  RegistryKey key;
  EXPECT_EQ("", Content(key.QueryString("Value")));
  EXPECT_EQ(4294967295u, key.QueryNumber("Value"));
  EXPECT_FALSE(key.SetString("Value", "text"));
  EXPECT_FALSE(key.SetNumber("Value", 1));
  EXPECT_FALSE(key.SetBytes("Value", ByteBuffer("a", 1)));
  RegistryEnumerator walk(key, RegistryItems::subkeys);
  EXPECT_TRUE(walk.Next().IsEmpty());
  EXPECT_FALSE(walk.HasReachedEnd());
}

TEST_F(NativeRegistryTest, WalksThenAllSubkeysAndAllValues) {
  RegistryKey key, subkey;
  ASSERT_TRUE(key.Create(os::CurrentUser(), "Shop", os::keyAllAccess));
  for (const char* name : {"1", "2", "10"}) ASSERT_TRUE(subkey.Create(key.Handle(), name, os::keyAllAccess));
  key.SetString("Tool", "19.95");
  key.SetNumber("CardType", 3);
  EXPECT_EQ((std::vector<std::string>{"1", "10", "2"}), Names(key, RegistryItems::subkeys));
  EXPECT_EQ((std::vector<std::string>{"CardType", "Tool"}), Names(key, RegistryItems::values));
  subkey.Open(key.Handle(), "1", os::keyRead);
  EXPECT_TRUE(Names(subkey, RegistryItems::subkeys).empty());
}

TEST_F(NativeRegistryTest, ProgramFilesDirectoryThenItExistsWhereThereIsOne) {
  const String directory = ProgramFilesDirectory();
#ifdef _WIN32
  EXPECT_TRUE(FileExists(directory)) << directory.Text();
#else
  EXPECT_TRUE(directory.IsEmpty()) << directory.Text();
#endif
}

}  // namespace
}  // namespace kest
