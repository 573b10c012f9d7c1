#include "platform/registry_key.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "core/exception.h"
#include "support/registry_fixture.h"
#include "support/storage_inspection.h"
#include "support/storage_recorder.h"

namespace kest {
namespace {

using testing::Content;
using namespace std::string_literals;

class RegistryKeyTest : public testing::RegistryTest {
 protected:
  RegistryKeyTest() { registry.Put("HKCU\\Shop"); }

  // What QueryString answers for a value of these bytes.
  std::string Queried(const std::string& data) {
    registry.Put("HKCU\\Shop", "Value", data);
    RegistryKey key;
    EXPECT_TRUE(key.Open(os::CurrentUser(), "Shop", os::keyRead));
    return Content(key.QueryString("Value"));
  }
  std::uint32_t QueriedNumber(const std::string& data) {
    registry.Put("HKCU\\Shop", "Value", data);
    RegistryKey key;
    EXPECT_TRUE(key.Open(os::CurrentUser(), "Shop", os::keyRead));
    return key.QueryNumber("Value");
  }
  int Count(const std::string& call) const {
    return static_cast<int>(std::count(registry.calls.begin(), registry.calls.end(), call));
  }
};

TEST_F(RegistryKeyTest, NothingOpenThenNothingIsClosed) {
  RegistryKey key;
  EXPECT_FALSE(key.IsOpen());
  EXPECT_EQ(nullptr, key.Handle());
  key.Close();
  EXPECT_TRUE(registry.calls.empty());
}

TEST_F(RegistryKeyTest, OpenedThenClosedOnceWhenDestroyed) {
  {
    RegistryKey key;
    EXPECT_TRUE(key.Open(os::CurrentUser(), "Shop", os::keyRead));
    EXPECT_TRUE(key.IsOpen());
  }
  EXPECT_EQ((std::vector<std::string>{"open read HKCU\\Shop", "close HKCU\\Shop"}), registry.calls);
}

TEST_F(RegistryKeyTest, ClosedThenNothingIsOpen) {
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  key.Close();
  EXPECT_FALSE(key.IsOpen());
  EXPECT_EQ(0u, registry.OpenHandles());
}

TEST_F(RegistryKeyTest, OpenedTwiceThenTheFirstHandleIsClosed) {
  registry.Put("HKCU\\Other");
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.Open(os::CurrentUser(), "Other", os::keyRead));
  EXPECT_EQ(1u, registry.OpenHandles());
  EXPECT_EQ(1, Count("close HKCU\\Shop"));
}

TEST_F(RegistryKeyTest, CreatedOverAnOpenOneThenTheFirstHandleIsClosed) {
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.Create(os::CurrentUser(), "Made", os::keyAllAccess));
  EXPECT_EQ(1u, registry.OpenHandles());
}

TEST_F(RegistryKeyTest, OpeningFailsThenNothingIsOpen) {
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_FALSE(key.Open(os::CurrentUser(), "Missing", os::keyRead));
  EXPECT_FALSE(key.IsOpen());
  EXPECT_FALSE(registry.Has("HKCU\\Missing"));
}

TEST_F(RegistryKeyTest, CreationRefusedThenNothingIsOpen) {
  registry.refusals["create all HKCU\\Made"] = os::errorAccessDenied;
  RegistryKey key;
  EXPECT_FALSE(key.Create(os::CurrentUser(), "Made", os::keyAllAccess));
  EXPECT_FALSE(key.IsOpen());
}

TEST_F(RegistryKeyTest, CreatedBelowAnOpenKeyThenItIsThereWithWhatIsAboveIt) {
  RegistryKey parent, key;
  parent.Open(os::CurrentUser(), "Shop", os::keyAllAccess);
  EXPECT_TRUE(key.Create(parent.Handle(), "A\\B", os::keyAllAccess));
  EXPECT_TRUE(registry.Has("HKCU\\Shop\\A\\B"));
}

TEST_F(RegistryKeyTest, LocalMachineIsAnotherRoot) {
  registry.Put("HKLM\\Machine");
  RegistryKey key;
  EXPECT_FALSE(key.Open(os::CurrentUser(), "Machine", os::keyRead));
  EXPECT_TRUE(key.Open(os::LocalMachine(), "Machine", os::keyRead));
}

TEST_F(RegistryKeyTest, TextThenItEndsAtItsFirstNul) {
  EXPECT_EQ("19.95", Queried("19.95\0"s));
  EXPECT_EQ("19", Queried("19\0.95\0"s));
  EXPECT_EQ("", Queried("\0abc"s));
}

TEST_F(RegistryKeyTest, ValueOfNoBytesThenAnEmptyText) { EXPECT_EQ("", Queried("")); }

TEST_F(RegistryKeyTest, DataWithoutNulThenAllOfItAndNoMore) {
  EXPECT_EQ("abc", Queried("abc"));
  // Lengths at which the text fills its block.
  for (const std::size_t length : {48u, 49u, 50u, 51u, 100u}) {
    EXPECT_EQ(std::string(length, 'x'), Queried(std::string(length, 'x')));
  }
}

TEST_F(RegistryKeyTest, TextThenItMayBeSharedByCopies) {
  registry.Put("HKCU\\Shop", "Value", "text\0"s);
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  const String text = key.QueryString("Value");
  const String copy = text;
  EXPECT_EQ(text.Characters(), copy.Characters());
}

TEST_F(RegistryKeyTest, NumberReadAsTextThenItsBytes) {
  registry.Put("HKCU\\Shop", "Number", "AB\0\0"s, os::typeNumber);
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_EQ("AB", Content(key.QueryString("Number")));
}

TEST_F(RegistryKeyTest, MissingValueThenAnEmptyText) {
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.QueryString("Missing").IsEmpty());
}

TEST_F(RegistryKeyTest, NoNameThenTheDefaultValue) {
  registry.Put("HKCU\\Shop", "", "default\0"s);
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_EQ("default", Content(key.QueryString(nullptr)));
}

TEST_F(RegistryKeyTest, ReadRefusedThenAnEmptyText) {
  registry.Put("HKCU\\Shop", "Value", "text\0"s);
  registry.refusals["read HKCU\\Shop : Value"] = os::errorAccessDenied;
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.QueryString("Value").IsEmpty());
  EXPECT_EQ(1, Count("read HKCU\\Shop : Value"));
}

TEST_F(RegistryKeyTest, ValueGrowsBeforeItIsReadThenItIsReadAgainWhole) {
  registry.Put("HKCU\\Shop", "Value", "one\0"s);
  int growths = 0;
  registry.before = [&](const std::string& call) {
    if (call != "read HKCU\\Shop : Value" || growths == 3) return;
    registry.Put("HKCU\\Shop", "Value", std::string(60u * static_cast<unsigned>(++growths), 'x') + '\0');
  };
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_EQ(std::string(180, 'x'), Content(key.QueryString("Value")));
  EXPECT_EQ(4, Count("size HKCU\\Shop : Value"));
  EXPECT_EQ(4, Count("read HKCU\\Shop : Value"));
}

TEST_F(RegistryKeyTest, ValueShrinksBeforeItIsReadThenWhatIsLeftOfIt) {
  registry.Put("HKCU\\Shop", "Value", "a longer text\0"s);
  registry.before = [&](const std::string& call) {
    if (call == "read HKCU\\Shop : Value") registry.Put("HKCU\\Shop", "Value", "ab");
  };
  // In memory that is not clear by chance.
  testing::StorageRecorder dirty(registry);
  testing::SystemInForce dirtyInForce(dirty);
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_EQ("ab", Content(key.QueryString("Value")));
}

TEST_F(RegistryKeyTest, ValueShrinksToNothingBeforeItIsReadThenAnEmptyText) {
  registry.Put("HKCU\\Shop", "Value", "text\0"s);
  registry.before = [&](const std::string& call) {
    if (call == "read HKCU\\Shop : Value") registry.Put("HKCU\\Shop", "Value", "");
  };
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.QueryString("Value").IsEmpty());
}

TEST_F(RegistryKeyTest, ValueVanishesAfterItGrewThenAnEmptyText) {
  registry.Put("HKCU\\Shop", "Value", "one\0"s);
  registry.before = [&](const std::string& call) {
    if (call != "read HKCU\\Shop : Value") return;
    registry.Put("HKCU\\Shop", "Value", std::string(60, 'x'));
    registry.refusals["size HKCU\\Shop : Value"] = os::errorFileNotFound;
  };
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_TRUE(key.QueryString("Value").IsEmpty());
  EXPECT_EQ(2, Count("size HKCU\\Shop : Value"));
}

// Answers more bytes than it was given room for.
class BoastfulRegistry : public testing::ForwardingSystem {
 public:
  std::int32_t RegQueryValueExA(os::RegistryHandle, const char*, std::uint32_t*, void* data,
                                std::uint32_t* size) override {
    if (data != nullptr) std::memset(data, 'x', *size);
    *size = data == nullptr ? 49 : 4000;
    return os::errorSuccess;
  }
};

TEST(RegistryKeyReadTest, SystemClaimsMoreThanItWroteThenNoMoreThanTheRoomIsLookedAt) {
  BoastfulRegistry registry;
  testing::SystemInForce inForce(registry);
  EXPECT_EQ(std::string(49, 'x'), Content(RegistryKey().QueryString("Value")));
}

TEST_F(RegistryKeyTest, NumberThenItsFourBytesLowByteFirst) {
  EXPECT_EQ(0x04030201u, QueriedNumber("\1\2\3\4"));
  EXPECT_EQ(0xFF000080u, QueriedNumber("\x80\0\0\xFF"s));
}

TEST_F(RegistryKeyTest, NumberOfFewerBytesThenTheOthersAreZero) {
  EXPECT_EQ(0x0201u, QueriedNumber("\1\2"));
  EXPECT_EQ(0u, QueriedNumber(""));
}

TEST_F(RegistryKeyTest, NumberThatCannotBeReadThenTheFailureNumber) {
  EXPECT_EQ(4294967295u, QueriedNumber("\1\2\3\4\5"));
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_EQ(4294967295u, key.QueryNumber("Missing"));
}

TEST_F(RegistryKeyTest, TextSetThenItIsStoredWithItsNul) {
  RegistryKey key;
  key.Create(os::CurrentUser(), "Shop", os::keyAllAccess);
  EXPECT_TRUE(key.SetString("Price", "19.95"));
  EXPECT_EQ("19.95\0"s, registry.Data("HKCU\\Shop", "Price"));
  EXPECT_EQ(os::typeString, registry.Values("HKCU\\Shop").at(0).type);
}

TEST_F(RegistryKeyTest, NullTextSetThenOneNulIsStored) {
  RegistryKey key;
  key.Create(os::CurrentUser(), "Shop", os::keyAllAccess);
  EXPECT_TRUE(key.SetString("Null", static_cast<const char*>(nullptr)));
  EXPECT_TRUE(key.SetString("Empty", ""));
  EXPECT_EQ("\0"s, registry.Data("HKCU\\Shop", "Null"));
  EXPECT_EQ("\0"s, registry.Data("HKCU\\Shop", "Empty"));
}

TEST_F(RegistryKeyTest, NumberSetThenFourBytesLowByteFirst) {
  RegistryKey key;
  key.Create(os::CurrentUser(), "Shop", os::keyAllAccess);
  EXPECT_TRUE(key.SetNumber("CardType", 0x80030201));
  EXPECT_EQ("\1\2\3\x80", registry.Data("HKCU\\Shop", "CardType"));
  EXPECT_EQ(os::typeNumber, registry.Values("HKCU\\Shop").at(0).type);
  EXPECT_EQ(0x80030201u, key.QueryNumber("CardType"));
}

TEST_F(RegistryKeyTest, BytesSetThenAllOfThemAndNoNul) {
  RegistryKey key;
  key.Create(os::CurrentUser(), "Shop", os::keyAllAccess);
  EXPECT_TRUE(key.SetBytes("Bytes", ByteBuffer("a\0b", 3)));
  EXPECT_TRUE(key.SetBytes("None", ByteBuffer()));
  EXPECT_EQ("a\0b"s, registry.Data("HKCU\\Shop", "Bytes"));
  EXPECT_EQ("", registry.Data("HKCU\\Shop", "None"));
  EXPECT_EQ(os::typeBinary, registry.Values("HKCU\\Shop").at(0).type);
}

TEST_F(RegistryKeyTest, KeyOpenForReadingThenNothingCanBeSet) {
  RegistryKey key;
  key.Open(os::CurrentUser(), "Shop", os::keyRead);
  EXPECT_FALSE(key.SetString("Text", "text"));
  EXPECT_FALSE(key.SetNumber("Number", 1));
  EXPECT_FALSE(key.SetBytes("Bytes", ByteBuffer("a", 1)));
  EXPECT_TRUE(registry.Values("HKCU\\Shop").empty());
}

TEST_F(RegistryKeyTest, NothingOpenThenEveryOperationFails) {
  RegistryKey key;
  EXPECT_TRUE(key.QueryString("Value").IsEmpty());
  EXPECT_EQ(4294967295u, key.QueryNumber("Value"));
  EXPECT_FALSE(key.SetString("Value", "text"));
  expectedWrongHandles = 3;
}

TEST_F(RegistryKeyTest, NoMemoryForTheTextThenTheExceptionAndNothingIsLeftOpen) {
  registry.Put("HKCU\\Shop", "Value", "text\0"s);
  {
    RegistryKey key;
    key.Open(os::CurrentUser(), "Shop", os::keyRead);
    memory.FailAt(1, testing::AllocationSystem::Failing::once);
    EXPECT_THROW(key.QueryString("Value"), Qor::MemoryException);
  }
  EXPECT_EQ(0u, registry.OpenHandles());
}

}  // namespace
}  // namespace kest
