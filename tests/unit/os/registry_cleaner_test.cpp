// Whoever takes leftovers away meets one who is writing, at the moments that matter: neither waits for the other, and
// nothing that has its place is taken away.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "unit/os/interrupted_write.h"

namespace os {
namespace {

namespace fs = std::filesystem;
using Strings = std::vector<std::string>;

bool IsLockOfNew(const TracedCall& call) {
  return call.number == SYS_flock && fs::path(call.file).filename().string().substr(0, 5) == ".new-";
}

class Cleaner : public InterruptedWrite {
 protected:
  Cleaner() : folder(store + "/HKEY_CURRENT_USER/software/veltrix/kest test " + std::to_string(getpid())) {}
  ~Cleaner() override { close(held); }

  // Runs `work`, in front of whose first lock a cleaner took its own, and stands still since. The work does not wait.
  TracedRun RunBesideStopped(const std::function<int()>& work) {
    Meddling meddling;
    meddling.before = [this](const TracedCall& call) {
      if (held >= 0 || !IsLockOfNew(call)) return;
      held = open(call.file.c_str(), O_RDONLY | O_CLOEXEC);
      EXPECT_EQ(0, flock(held, LOCK_EX | LOCK_NB));
    };
    return RunTraced(
        [&] {
          alarm(20);
          return work();
        },
        meddling);
  }
  int Clean() const {
    OpenedKey writer;
    return writer.Create(CurrentUser(), path.c_str());
  }

  const std::string folder;
  int held = -1;
};

TEST_F(Cleaner, IsNotWaitedForByAWriter) {
  const TracedRun run = RunBesideStopped([&] { return Replace(); });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_GE(held, 0);
  EXPECT_EQ(errorSuccess, run.result);
  EXPECT_TRUE(IsNew());
  EXPECT_EQ(0u, Unfinished());
}

TEST_F(Cleaner, IsNotWaitedForByWhoMakesAKey) {
  const TracedRun run = RunBesideStopped([&] {
    OpenedKey child;
    return child.Create(key, "New Key");
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_GE(held, 0);
  EXPECT_EQ(errorSuccess, run.result);
  EXPECT_EQ(Strings{"New Key"}, KeyNames(key));
  EXPECT_EQ(0u, Unfinished());
}

TEST_F(Cleaner, TakesNothingFromAKeyThatGotItsPlaceMeanwhile) {
  fs::create_directory(folder + "/.new-1-1");
  fs::copy_file(folder + "/=other", folder + "/.new-1-1/=other");
  bool isMoved = false;
  Meddling meddling;
  meddling.before = [&](const TracedCall& call) {
    if (isMoved || !IsLockOfNew(call)) return;
    isMoved = true;
    fs::rename(folder + "/.new-1-1", folder + "/made");
  };
  const TracedRun run = RunTraced([&] { return Clean(); }, meddling);
  KEST_TRACED_OR_SKIP(run);
  EXPECT_TRUE(isMoved);
  EXPECT_EQ(errorSuccess, run.result);
  OpenedKey made;
  ASSERT_EQ(errorSuccess, made.Open(key, "made"));
  EXPECT_EQ(otherData, Get(made, "other").data);
}

TEST_F(Cleaner, TakesNothingOnWhichALockIsHeld) {
  std::ofstream(folder + "/.new-1-1") << "half a val";
  held = open((folder + "/.new-1-1").c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(0, flock(held, LOCK_EX | LOCK_NB));
  EXPECT_EQ(errorSuccess, Clean());
  EXPECT_EQ(1u, Unfinished());
  ASSERT_EQ(0, flock(held, LOCK_UN));
  EXPECT_EQ(errorSuccess, Clean());
  EXPECT_EQ(0u, Unfinished());
}

// A writer whose file was taken away, with another one in its place, leaves that and tries the next name.
TEST_F(Cleaner, LetsAWriterLeaveWhatHasItsName) {
  std::string other;
  Meddling meddling;
  meddling.before = [&](const TracedCall& call) {
    if (!other.empty() || !IsLockOfNew(call)) return;
    other = call.file;
    fs::rename(other, folder + "/aside");
    std::ofstream(other) << "another's";
  };
  const TracedRun run = RunTraced([&] { return Replace(); }, meddling);
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(errorSuccess, run.result);
  EXPECT_TRUE(IsNew());
  std::string left;
  std::getline(std::ifstream(other), left);
  EXPECT_EQ("another's", left);
}

// Of all files that are refused once, only the leftover is opened a second time.
TEST_F(Cleaner, TakesAwayWhatItMayNotReadAtFirst) {
  int taken = 0;
  bool isReached = true;
  for (Meddling meddling{0, 1, EACCES, {SYS_openat}, folder}; isReached; ++meddling.failCall) {
    std::ofstream(folder + "/.new-1-1") << "half a val";
    fs::permissions(folder + "/.new-1-1", fs::perms::none);
    const TracedRun run = RunTraced([&] { return Clean(); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    taken += isReached && run.result == errorSuccess && Unfinished() == 0;
  }
  EXPECT_EQ(1, taken);
  EXPECT_EQ(0u, Unfinished());
}

}  // namespace
}  // namespace os
