// The registry under masks and modes that leave even the owner little. The superuser is held by none of them, so the
// work is done by another user.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "unit/os/registry_place.h"
#include "unit/os/traced_child.h"

namespace os {
namespace {

namespace fs = std::filesystem;

class Modes : public ::testing::Test {
 protected:
  Modes() {
    char made[] = "/tmp/kest-modes-XXXXXX";  // mkdtemp fills the X in
    EXPECT_NE(nullptr, mkdtemp(made));
    folder = made;
    EXPECT_EQ(0, chown(made, user, static_cast<gid_t>(-1)));
    store = folder + "/new/store";
  }
  ~Modes() override {
    chmod(folder.c_str(), 0700);
    fs::remove_all(folder);
  }
  // Answers what `work` does, done by the folder's owner on a store in it.
  int Run(const std::function<int()>& work) const {
    return WaitFor(Start([&] {
      if (setuid(user) != 0) return 255;
      setenv("KESTAPI_REGISTRY", store.c_str(), 1);
      return work();
    }));
  }
  static int WriteAndRead() {
    OpenedKey made;
    const std::int32_t error = made.Create(CurrentUser(), "plain\\Named\\plain");
    if (error != errorSuccess) return error;
    if (const std::int32_t failure = Set(made, "Value", typeString, "data")) return failure;
    return Get(made, "value").data == "data" ? 0 : 254;
  }

  const uid_t user = getuid() != 0 ? getuid() : 3999999;
  std::string folder, store;
};

TEST_F(Modes, AMaskThatForbidsAllForbidsTheOwnerNothing) {
  EXPECT_EQ(0, Run([] {
              umask(0777);
              return WriteAndRead();
            }));
  int entries = 0;
  for (const auto& entry : fs::recursive_directory_iterator(folder)) {
    const auto expected = entry.is_directory() ? fs::perms::owner_all : fs::perms::owner_read | fs::perms::owner_write;
    EXPECT_EQ(expected, entry.status().permissions()) << entry.path();
    ++entries;
  }
  EXPECT_EQ(8, entries);  // new, store, the root, three keys, a name, a value
}

TEST_F(Modes, ALeftoverThatMayNotBeReadIsTakenAway) {
  EXPECT_EQ(0, Run([this] {
              if (WriteAndRead() != 0) return 1;
              umask(0777);
              const std::string left = store + "/HKEY_CURRENT_USER/plain/named/plain/.new-1-1";
              return mkdir(left.c_str(), 0700) == 0 && WriteAndRead() == 0 && access(left.c_str(), F_OK) != 0 ? 0 : 2;
            }));
}

TEST_F(Modes, AParentThatMayNotBeReadHoldsAStore) {
  EXPECT_EQ(0, Run([this] {
              if (chmod(folder.c_str(), 0300) != 0) return 255;
              return WriteAndRead();
            }));
}

TEST_F(Modes, AStoreThatMayNotBeReadIsAStore) {
  store = folder;
  EXPECT_EQ(0, Run([this] {
              if (chmod(folder.c_str(), 0300) != 0) return 255;
              return WriteAndRead();
            }));
}

TEST_F(Modes, AParentThatMayNotBeWrittenTakesNoStore) {
  EXPECT_EQ(errorAccessDenied, Run([this] {
              if (chmod(folder.c_str(), 0500) != 0) return 255;
              return WriteAndRead();
            }));
}

}  // namespace
}  // namespace os
