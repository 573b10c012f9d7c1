// Where the store lies on POSIX systems, who may read it, and what holds there beyond what every system promises.
#include <gtest/gtest.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "os/posix/registry_name.h"
#include "unit/os/meddled_calls.h"
#include "unit/os/registry_place.h"
#include "unit/os/traced_child.h"

namespace os {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

class Store : public RegistryPlace {};

TEST_F(Store, KeysAreDirectoriesAndValuesFiles) {
  OpenedKey made;
  ASSERT_EQ(errorSuccess, made.Create(key, "Receipts\\3-7-1998\\{A}"));
  ASSERT_EQ(errorSuccess, Set(made, "Guid", typeString, "x"));
  ASSERT_EQ(errorSuccess, Set(made, "", typeString, "x"));
  const std::string top = store + "/HKEY_CURRENT_USER/software/veltrix";
  const std::string folder = top + "/kest test " + std::to_string(getpid()) + "/receipts/3-7-1998/%7ba%7d";
  EXPECT_TRUE(fs::is_regular_file(folder + "/=guid"));
  EXPECT_TRUE(fs::is_regular_file(folder + "/="));
  EXPECT_TRUE(fs::is_regular_file(folder + "/.name"));
  EXPECT_FALSE(fs::exists(folder + "/../.name")) << "its file name tells all of 3-7-1998";
}

TEST_F(Store, AValuesFileHasTheFormThatIsWrittenDown) {
  ASSERT_EQ(errorSuccess, Set(key, "Ab", typeNumber, std::string("\x01\x02\x03\x04", 4)));
  std::ifstream file(store + "/HKEY_CURRENT_USER/software/veltrix/kest test " + std::to_string(getpid()) + "/=ab",
                     std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(file), {}};
  const std::string expected("KESTREG1\4\0\0\0\2\0\0\0\4\0\0\0Ab\1\2\3\4", 26);
  ASSERT_EQ(34u, bytes.size());
  EXPECT_EQ(expected, bytes.substr(0, 26));
  std::uint64_t hash = 14695981039346656037u;
  for (const unsigned char byte : expected) hash = (hash ^ byte) * 1099511628211u;
  for (std::size_t i = 0; i < 8; ++i) EXPECT_EQ(static_cast<char>(hash >> 8 * i & 0xFF), bytes[26 + i]);
}

TEST_F(Store, NobodyButTheOwnerMayReadIt) {
  const mode_t old = umask(0);
  OpenedKey made;
  EXPECT_EQ(errorSuccess, made.Create(key, "Receipts\\plain\\below"));
  EXPECT_EQ(errorSuccess, Set(made, "Guid", typeString, "x"));
  umask(old);
  int files = 0;
  for (const auto& entry : fs::recursive_directory_iterator(store)) {
    const auto expected = entry.is_directory() ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(expected, entry.status().permissions()) << entry.path();
    ++files;
  }
  EXPECT_GT(files, 8);
}

TEST_F(Store, AFileThatComesInPiecesIsReadWhole) {
  const std::string data(1000, 'd');
  ASSERT_EQ(errorSuccess, Set(key, "Value", typeString, data));
  for (const std::size_t most : {1u, 7u, 20u, 21u, 999u}) {
    mostReadAtOnce = most;
    const StoredValue value = Get(key, "Value");
    mostReadAtOnce = 0;
    EXPECT_EQ((StoredValue{errorSuccess, typeString, data}), value) << most;
  }
}

TEST_F(Store, AWalkGoesOnThroughWhatItFoundAtItsStart) {
  const auto make = [this](const char* name) {
    OpenedKey made;
    EXPECT_EQ(errorSuccess, made.Create(key, name));
  };
  const auto at = [this](std::uint32_t index) {
    char name[8] = "";
    std::uint32_t characters = sizeof name;
    EXPECT_EQ(errorSuccess, Native().RegEnumKeyExA(key, index, name, &characters));
    return std::string(name);
  };
  make("b");
  make("c");
  EXPECT_EQ("b", at(0));
  make("a");
  EXPECT_EQ("c", at(1));
  EXPECT_EQ("a", at(0));
}

TEST_F(Store, CapitalLettersDecideTheOrder) {
  for (const char* name : {"b", "_", "C", "a", "[", "\xE4"}) {
    OpenedKey made;
    ASSERT_EQ(errorSuccess, made.Create(key, name));
    ASSERT_EQ(errorSuccess, Set(key, name, typeString, ""));
  }
  EXPECT_EQ((Strings{"a", "b", "C", "[", "_", "\xE4"}), KeyNames(key));
  EXPECT_EQ((Strings{"a", "b", "C", "[", "_", "\xE4"}), ValueNames(key));
}

TEST_F(Store, NamesBeyondTheLimitsAreRefused) {
  const std::string keyName(256, 'k'), longest(16383, 'v'), tooLong(16384, 'v');
  OpenedKey refused;
  std::uint32_t size = 0;
  EXPECT_EQ(errorInvalidParameter, refused.Create(key, keyName.c_str()));
  EXPECT_EQ(errorInvalidParameter, refused.Create(key, ("a\\" + keyName).c_str()));
  EXPECT_EQ(errorInvalidParameter, refused.Open(key, keyName.c_str()));
  EXPECT_EQ(Strings{}, KeyNames(key));
  EXPECT_EQ(errorInvalidParameter, Set(key, tooLong.c_str(), typeString, "x"));
  EXPECT_EQ(errorInvalidParameter, Native().RegQueryValueExA(key, tooLong.c_str(), nullptr, nullptr, &size));
  EXPECT_EQ(errorSuccess, Set(key, longest.c_str(), typeString, "x"));
  EXPECT_EQ(Strings{longest}, ValueNames(key));
}

TEST_F(Store, AValueHasUpTo64Megabytes) {
  const std::string most(64 << 20, 'm');
  EXPECT_EQ(errorInvalidParameter, Set(key, "Value", typeBinary, most + "m"));
  EXPECT_EQ(errorFileNotFound, Get(key, "Value").error);
  ASSERT_EQ(errorSuccess, Set(key, "Value", typeBinary, most));
  EXPECT_TRUE(Get(key, "Value") == (StoredValue{errorSuccess, typeBinary, most}));
}

TEST_F(Store, SeveralSeparatorsAreOne) {
  OpenedKey made, opened;
  ASSERT_EQ(errorSuccess, made.Create(key, "\\a\\\\b\\"));
  EXPECT_EQ(errorSuccess, opened.Open(key, "a\\b"));
}

TEST_F(Store, DataIsNeeded) {
  EXPECT_EQ(errorInvalidParameter, Native().RegSetValueExA(key, "v", 1, nullptr, 4));
}

TEST_F(Store, NoKeyIsNoParent) {
  OpenedKey made;
  std::uint32_t size = 0;
  EXPECT_EQ(errorInvalidHandle, made.Open(nullptr, "a"));
  EXPECT_EQ(errorInvalidHandle, made.Create(nullptr, "a"));
  EXPECT_EQ(errorInvalidHandle, Native().RegQueryValueExA(nullptr, "v", nullptr, nullptr, &size));
  EXPECT_EQ(errorInvalidHandle, Set(nullptr, "v", typeString, ""));
  char name[4];
  EXPECT_EQ(errorInvalidHandle, Native().RegEnumKeyExA(nullptr, 0, name, &size));
}

TEST_F(Store, OtherRootsHoldNothing) {
  OpenedKey made;
  std::uint32_t size = 0;
  for (const int root : {-0x80000000ll, -0x7FFFFFFEll, -0x7FFFFFFDll}) {
    auto* handle = reinterpret_cast<RegistryHandle>(static_cast<std::intptr_t>(root));
    EXPECT_EQ(errorFileNotFound, made.Open(handle, "Software"));
    EXPECT_EQ(errorAccessDenied, made.Create(handle, "Software"));
    EXPECT_EQ(errorFileNotFound, Native().RegQueryValueExA(handle, "v", nullptr, nullptr, &size));
    EXPECT_EQ(errorAccessDenied, Set(handle, "v", typeString, ""));
    EXPECT_EQ(Strings{}, KeyNames(handle));
    EXPECT_EQ(errorSuccess, Native().RegCloseKey(handle));
  }
}

TEST_F(Store, ARootHasValues) {
  ASSERT_EQ(errorSuccess, Set(CurrentUser(), "Value", typeString, "data"));
  EXPECT_EQ("data", Get(CurrentUser(), "value").data);
  EXPECT_EQ(Strings{"Value"}, ValueNames(CurrentUser()));
}

TEST_F(Store, NamesAreCutToAHashOfTheWhole) {
  using posix::FileNameOfValue;
  const posix::FileName whole = FileNameOfValue(std::string(199, 'a')), cut = FileNameOfValue(std::string(200, 'A'));
  EXPECT_EQ("=" + std::string(199, 'a'), whole.text);
  EXPECT_FALSE(whole.isCut);
  EXPECT_TRUE(cut.isCut);
  std::uint64_t hash = 14695981039346656037u;
  for (int i = 0; i < 200; ++i) hash = (hash ^ 'a') * 1099511628211u;
  char digits[20];
  std::snprintf(digits, sizeof digits, "~%016llx", static_cast<unsigned long long>(hash));
  EXPECT_EQ("=" + std::string(179, 'a') + digits, cut.text);
}

TEST_F(Store, AFileNameThatIsTooLongIsNoName) {
  char name[256];
  EXPECT_EQ("", posix::NameOfKeyFile(std::string(300, 'a'), name));
}

// A folder in which the store is looked for.
class StorePlace : public ::testing::Test {
 protected:
  StorePlace() {
    char made[] = "/tmp/kest-place-XXXXXX";
    EXPECT_NE(nullptr, mkdtemp(made));
    folder = made;
    EXPECT_EQ(0, chdir(made));
  }
  ~StorePlace() override {
    EXPECT_EQ(0, chdir("/"));
    fs::remove_all(folder);
  }
  // Restores what other tests find there.
  class Variable {
   public:
    Variable(const char* which, const char* value) : name(which) {
      const char* before = std::getenv(which);
      hadOne = before != nullptr;
      if (hadOne) old = before;
      value != nullptr ? setenv(which, value, 1) : unsetenv(which);
    }
    ~Variable() { hadOne ? setenv(name, old.c_str(), 1) : unsetenv(name); }

   private:
    const char* name;
    std::string old;
    bool hadOne;
  };
  static std::int32_t MakeKey() {
    OpenedKey made;
    return made.Create(CurrentUser(), "key");
  }
  bool IsAt(const char* store) const { return fs::is_directory(folder + "/" + store + "/HKEY_CURRENT_USER/key"); }
  std::size_t Count() const {
    return static_cast<std::size_t>(std::distance(fs::recursive_directory_iterator(folder), {}));
  }

  std::string folder;
};

TEST_F(StorePlace, ItsOwnVariableGoesBeforeAll) {
  const Variable own("KESTAPI_REGISTRY", (folder + "/new/own").c_str()), data("XDG_DATA_HOME", folder.c_str());
  EXPECT_EQ(errorSuccess, MakeKey());
  EXPECT_TRUE(IsAt("new/own"));
  EXPECT_EQ(4u, Count());
}

TEST_F(StorePlace, ItsOwnVariableMayBeRelative) {
  const Variable own("KESTAPI_REGISTRY", "here");
  EXPECT_EQ(errorSuccess, MakeKey());
  EXPECT_TRUE(IsAt("here"));
}

TEST_F(StorePlace, TheDataDirectoryComesNext) {
  const Variable own("KESTAPI_REGISTRY", ""), data("XDG_DATA_HOME", (folder + "/data").c_str());
  EXPECT_EQ(errorSuccess, MakeKey());
  EXPECT_TRUE(IsAt("data/kestapi"));
}

TEST_F(StorePlace, ARelativeDataDirectoryDoesNotCount) {
  const Variable own("KESTAPI_REGISTRY", nullptr), data("XDG_DATA_HOME", "data"), home("HOME", folder.c_str());
  EXPECT_EQ(errorSuccess, MakeKey());
  EXPECT_TRUE(IsAt(".local/share/kestapi"));
  struct stat made {};
  ASSERT_EQ(0, stat((folder + "/.local").c_str(), &made));
  EXPECT_EQ(0700u, made.st_mode & 0777u);
}

TEST_F(StorePlace, WithoutAHomeTheUsersEntryTellsOne) {
  const Variable own("KESTAPI_REGISTRY", nullptr), data("XDG_DATA_HOME", nullptr), home("HOME", nullptr);
  if (getpwuid(getuid()) == nullptr) GTEST_SKIP() << "skipped: the user has no entry";
  homeOfUsers = folder;
  const std::int32_t error = MakeKey();
  homeOfUsers.reset();
  EXPECT_EQ(errorSuccess, error);
  EXPECT_TRUE(IsAt(".local/share/kestapi"));
}

TEST_F(StorePlace, TheUsersEntryDoesNotCountBesideAHome) {
  const Variable own("KESTAPI_REGISTRY", nullptr), data("XDG_DATA_HOME", nullptr), home("HOME", folder.c_str());
  homeOfUsers = "/nowhere";
  const std::int32_t error = MakeKey();
  homeOfUsers.reset();
  EXPECT_EQ(errorSuccess, error);
  EXPECT_TRUE(IsAt(".local/share/kestapi"));
}

TEST_F(StorePlace, AUserWithoutAHomeHasNoStore) {
  if (getuid() != 0) GTEST_SKIP() << "skipped: the superuser alone becomes a user without an entry";
  const Variable own("KESTAPI_REGISTRY", nullptr), data("XDG_DATA_HOME", nullptr), home("HOME", nullptr);
  EXPECT_EQ(0, WaitFor(Start([] {
              constexpr uid_t nobodys = 3999999;
              if (setuid(nobodys) != 0 || getpwuid(nobodys) != nullptr) return 1;
              OpenedKey opened;
              if (opened.Open(CurrentUser(), "") != errorFileNotFound) return 2;
              return MakeKey() == errorAccessDenied ? 0 : 3;
            })));
}

TEST_F(StorePlace, OpeningMakesNoStore) {
  const Variable own("KESTAPI_REGISTRY", (folder + "/store").c_str());
  OpenedKey opened;
  EXPECT_EQ(errorFileNotFound, opened.Open(CurrentUser(), "key"));
  EXPECT_EQ(errorFileNotFound, Get(CurrentUser(), "value").error);
  EXPECT_EQ(Strings{}, KeyNames(CurrentUser()));
  EXPECT_EQ(Strings{}, ValueNames(CurrentUser()));
  EXPECT_EQ(0u, Count());
}

TEST_F(StorePlace, AStoreThatCannotBeMadeIsNoStore) {
  std::ofstream(folder + "/file") << "x";
  const Variable own("KESTAPI_REGISTRY", (folder + "/file/store").c_str());
  EXPECT_EQ(errorWriteFault, MakeKey());
  OpenedKey opened;
  EXPECT_EQ(errorFileNotFound, opened.Open(CurrentUser(), ""));
}

TEST_F(StorePlace, APathThatIsTooLongIsNoStore) {
  const std::string tooLong = "/" + std::string(5000, 'a');
  OpenedKey opened;
  const Variable data("XDG_DATA_HOME", tooLong.c_str());
  for (const char* value : {tooLong.c_str(), ""}) {
    const Variable own("KESTAPI_REGISTRY", value);
    EXPECT_EQ(errorAccessDenied, MakeKey());
    EXPECT_EQ(errorFileNotFound, opened.Open(CurrentUser(), ""));
  }
}

}  // namespace
}  // namespace os
