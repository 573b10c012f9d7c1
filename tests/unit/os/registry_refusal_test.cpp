// A process is refused each system call of a change of the registry in turn: the call fails as it should or finds
// another way, nothing is half done, and the next writer is not hindered.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

#include "os/posix/registry_name.h"
#include "unit/os/interrupted_write.h"

namespace os {
namespace {

using Strings = std::vector<std::string>;

class RefusedCall : public InterruptedWrite {};

TEST_F(RefusedCall, LeavesTheOldValueOrTheNewOne) {
  int failures = 0, points = 0;
  for (const int error : {EIO, ENOSPC, EACCES, EROFS, ENOMEM, EMFILE}) {
    bool isReached = true;
    for (Meddling meddling{0, 1, error, fileCalls, store}; isReached; ++meddling.failCall) {
      const TracedRun run = RunTraced([&] { return Replace(); }, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      points += isReached;
      ASSERT_NE(IsOld(), IsNew()) << "call " << meddling.failCall << " error " << error;
      if (run.result == errorSuccess) {
        EXPECT_TRUE(IsNew()) << "call " << meddling.failCall << " error " << error;
        EXPECT_NE(SYS_fsync, run.refused) << "error " << error;
      } else {
        ++failures;
        // Only the flush of the key comes when the new value stands already.
        EXPECT_TRUE(IsOld() || run.refused == SYS_fsync) << "call " << meddling.failCall;
        const bool isDenied = error == EACCES || error == EROFS, isLack = error == ENOMEM || error == EMFILE;
        EXPECT_EQ(isDenied ? errorAccessDenied : isLack ? errorNotEnoughMemory : errorWriteFault, run.result);
      }
      ExpectTheRestIntact();
      EXPECT_EQ(0u, Unfinished());
      Prepare();
    }
  }
  std::printf("%d refused calls, of which %d made the write fail\n", points, failures);
  EXPECT_GT(failures, 40);
}

TEST_F(RefusedCall, LeavesTheNewKeyOrNone) {
  int made = 0, failures = 0;
  for (const int error : {EIO, EACCES, EMFILE, EINVAL, EEXIST}) {
    bool isReached = true;
    for (Meddling meddling{0, 1, error, fileCalls, store}; isReached; ++meddling.failCall) {
      const std::string name = "New Key " + std::to_string(++made);
      const auto create = [&] {
        OpenedKey child;
        return child.Create(key, name.c_str());
      };
      const TracedRun run = RunTraced(create, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      failures += run.result != errorSuccess;
      OpenedKey found;
      const std::int32_t opened = found.Open(key, name.c_str());
      EXPECT_TRUE(opened == errorSuccess || run.result != errorSuccess) << "call " << meddling.failCall;
      EXPECT_TRUE(run.refused != SYS_fsync || run.result != errorSuccess) << "call " << meddling.failCall;
      EXPECT_TRUE(opened == errorSuccess || opened == errorFileNotFound);
      EXPECT_TRUE(error != EACCES || run.result == errorSuccess || run.result == errorAccessDenied) << run.result;
      EXPECT_TRUE(error != EMFILE || run.result == errorSuccess || run.result == errorNotEnoughMemory) << run.result;
      EXPECT_EQ(0u, Unfinished());
      EXPECT_EQ(errorSuccess, create());
    }
  }
  std::printf("%d runs, of which %d made no key\n", made, failures);
  EXPECT_GT(failures, 20);
}

TEST_F(RefusedCall, InterruptedReadsAndWritesGoOn) {
  bool isReached = true;
  for (Meddling meddling{0, 1, EINTR, {SYS_read, SYS_write, SYS_flock}, store}; isReached; ++meddling.failCall) {
    const TracedRun run = RunTraced([&] { return Replace(); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    EXPECT_EQ(errorSuccess, run.result) << "call " << meddling.failCall;
    EXPECT_TRUE(IsNew());
    EXPECT_EQ((Strings{"other", "Value"}), ValueNames(key));
    Prepare();
  }
}

TEST_F(RefusedCall, OfBytesThatAreCutOffMeanwhileIsNoValue) {
  int reads = 0;
  Meddling meddling;
  meddling.before = [&](const TracedCall& call) {
    if (call.number != SYS_read || call.file.substr(0, store.size()) != store) return;
    // The header has been read, and what it says of the length was true.
    if (++reads == 2) std::filesystem::resize_file(call.file, 25);
  };
  const auto query = [&] {
    std::uint32_t size = 0;
    return Native().RegQueryValueExA(key, "value", nullptr, nullptr, &size);
  };
  const TracedRun run = RunTraced(query, meddling);
  KEST_TRACED_OR_SKIP(run);
  EXPECT_GE(reads, 2);
  EXPECT_EQ(errorFileNotFound, run.result);
}

TEST_F(RefusedCall, LeavesAStoreThatCanBeMade) {
  int made = 0, failures = 0;
  for (const int error : {EIO, EACCES, EMFILE, EEXIST}) {
    bool isReached = true;
    for (Meddling meddling{0, 1, error, fileCalls, store}; isReached; ++meddling.failCall) {
      setenv("KESTAPI_REGISTRY", (store + "/" + std::to_string(++made) + "/store").c_str(), 1);
      const auto create = [] {
        OpenedKey child;
        return child.Create(CurrentUser(), "key");
      };
      const TracedRun run = RunTraced(create, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      failures += run.result != errorSuccess;
      OpenedKey found;
      EXPECT_TRUE(run.result != errorSuccess || found.Open(CurrentUser(), "key") == errorSuccess);
      EXPECT_TRUE(run.refused != SYS_fsync || run.result != errorSuccess) << "call " << meddling.failCall;
      EXPECT_EQ(errorSuccess, create());
    }
  }
  std::printf("%d runs, of which %d made no store\n", made, failures);
  EXPECT_GT(failures, 20);
}

// What the old record holds is not guessed: the first spelling would be lost.
TEST_F(RefusedCall, OfAHandleKeepsTheFirstSpelling) {
  for (const int error : {EMFILE, ENFILE, ENOMEM}) {
    bool isReached = true;
    for (Meddling meddling{0, 1, error, {SYS_openat, SYS_read}, store}; isReached; ++meddling.failCall) {
      const TracedRun run = RunTraced([&] { return Replace(); }, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      EXPECT_EQ(isReached ? errorNotEnoughMemory : errorSuccess, run.result) << "call " << meddling.failCall;
      EXPECT_TRUE(IsSpelledAsAtFirst()) << "call " << meddling.failCall << " error " << error;
    }
  }
}

// Whoever goes on without end is stopped.
constexpr unsigned patience = 20;  // seconds

TEST_F(RefusedCall, ToLookAtWhatIsBeingMadeEndsInAFailure) {
  const auto create = [&] {
    OpenedKey child;
    return child.Create(key, "New Key");
  };
  for (const std::function<int()>& work : {std::function<int()>([&] { return Replace(); }), {create}}) {
    const auto patient = [&] {
      alarm(patience);
      return work();
    };
    const TracedRun run = RunTraced(patient, {0, 1, EIO, {SYS_newfstatat}, store, true});
    KEST_TRACED_OR_SKIP(run);
    EXPECT_EQ(errorWriteFault, run.result);
    EXPECT_EQ(0u, Unfinished());
    EXPECT_TRUE(IsOld());
    EXPECT_EQ(Strings{}, KeyNames(key));
  }
}

TEST_F(RefusedCall, ToMakeAnyNameEndsInAFailure) {
  OpenedKey child;
  const auto create = [&] {
    alarm(patience);
    return child.Create(key, "New Key");
  };
  const TracedRun run = RunTraced(create, {0, 1, EEXIST, {SYS_mkdirat}, store, true});
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(errorWriteFault, run.result);
  EXPECT_EQ(Strings{}, KeyNames(key));
}

TEST_F(RefusedCall, ToRenameWithoutReplacingIsDoneWithout) {
  for (const int error : {EINVAL, ENOSYS}) {
    OpenedKey above, below;
    const std::string name = "New Key " + std::to_string(error);
    ASSERT_EQ(errorSuccess, above.Create(key, name.c_str()));
    const auto create = [&] {
      OpenedKey first, second;
      return first.Create(above, "Inner") == errorSuccess && second.Create(above, "INNER\\Deep") == errorSuccess;
    };
    const TracedRun run = RunTraced(create, {0, 1, error, {SYS_renameat2}, store, true});
    KEST_TRACED_OR_SKIP(run);
    EXPECT_EQ(1, run.result);
    EXPECT_EQ(Strings{"Inner"}, KeyNames(above));
    ASSERT_EQ(errorSuccess, below.Open(above, "inner"));
    EXPECT_EQ(Strings{"Deep"}, KeyNames(below));
    EXPECT_EQ(0u, Unfinished());
  }
}

TEST_F(RefusedCall, WithoutReplacingFindsWhatIsNoKey) {
  const std::string longName(250, 'l');
  std::filesystem::create_directory(store + "/HKEY_CURRENT_USER/" + posix::FileNameOfKey(longName).text);
  const auto create = [&] {
    OpenedKey made;
    return made.Create(CurrentUser(), longName.c_str());
  };
  const TracedRun run = RunTraced(create, {0, 1, EINVAL, {SYS_renameat2}, store});
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_renameat2, run.refused);
  EXPECT_EQ(errorAccessDenied, run.result);
  EXPECT_EQ(0u, Unfinished());
}

TEST_F(RefusedCall, AndThoseBehindItLeaveANewKeyThatCanBeMade) {
  int made = 0, failures = 0;
  const std::vector<long> someCalls = {SYS_renameat2, SYS_openat}, moreCalls = {SYS_renameat2, SYS_mkdirat, SYS_openat};
  for (const auto& calls : {someCalls, moreCalls}) {
    bool isReached = true;
    for (Meddling meddling{0, 1, EINVAL, calls, store, true}; isReached; ++meddling.failCall) {
      const std::string name = "New Key " + std::to_string(++made);
      const auto create = [&] {
        OpenedKey child;
        return child.Create(key, name.c_str());
      };
      const TracedRun run = RunTraced(create, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      failures += run.result != errorSuccess;
      OpenedKey found, writer;
      EXPECT_TRUE(run.result != errorSuccess || found.Open(key, name.c_str()) == errorSuccess);
      EXPECT_EQ(errorSuccess, create()) << "call " << meddling.failCall;
      EXPECT_EQ(errorSuccess, writer.Create(CurrentUser(), path.c_str()));
      EXPECT_EQ(0u, Unfinished()) << "call " << meddling.failCall;
    }
  }
  EXPECT_GT(failures, 8);
  EXPECT_EQ(static_cast<std::size_t>(made), KeyNames(key).size());
}

TEST_F(RefusedCall, ThatFindsNothingIsTriedAgain) {
  bool isReached = true;
  int made = 0;
  for (Meddling meddling{0, 1, ENOENT, {SYS_openat}, store}; isReached; ++meddling.failCall) {
    const std::string name = "New Key " + std::to_string(++made);
    const auto create = [&] {
      OpenedKey child;
      return child.Create(key, name.c_str());
    };
    const TracedRun run = RunTraced(create, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    EXPECT_EQ(errorSuccess, create()) << "call " << meddling.failCall;
    OpenedKey writer;
    writer.Create(CurrentUser(), path.c_str());
    EXPECT_EQ(0u, Unfinished()) << "call " << meddling.failCall;
  }
  EXPECT_EQ(static_cast<std::size_t>(made), KeyNames(key).size());
}

TEST_F(RefusedCall, DoesNotShortenAWalk) {
  OpenedKey subkey;
  ASSERT_EQ(errorSuccess, subkey.Create(key, "Key"));
  for (const auto enumerate : {&System::RegEnumKeyExA, &System::RegEnumValueA}) {
    const char* const first = enumerate == &System::RegEnumKeyExA ? "Key" : "other";
    bool isReached = true;
    for (Meddling meddling{0, 1, EMFILE, {SYS_openat, SYS_getdents64}, store}; isReached; ++meddling.failCall) {
      const auto walk = [&] {
        char name[16] = "";
        std::uint32_t characters = sizeof name;
        const std::int32_t error = (Native().*enumerate)(key, 0, name, &characters);
        return error == errorSuccess && std::string(name) != first ? 255 : error;
      };
      const TracedRun run = RunTraced(walk, meddling);
      KEST_TRACED_OR_SKIP(run);
      isReached = run.refused >= 0;
      EXPECT_EQ(isReached ? errorNotEnoughMemory : errorSuccess, run.result) << "call " << meddling.failCall;
    }
  }
}

TEST_F(RefusedCall, OfAReaderTellsWhatIsLacking) {
  std::uint32_t size = 0;
  const auto query = [&] { return Native().RegQueryValueExA(key, "value", nullptr, nullptr, &size); };
  const std::pair<int, std::int32_t> meanings[] = {{EMFILE, errorNotEnoughMemory}, {ENFILE, errorNotEnoughMemory},
                                                   {ENOMEM, errorNotEnoughMemory}, {EACCES, errorAccessDenied},
                                                   {EPERM, errorAccessDenied},     {EIO, errorFileNotFound}};
  for (const auto& [error, meaning] : meanings) {
    const TracedRun run = RunTraced(query, {0, 1, error, {SYS_openat}, store});
    KEST_TRACED_OR_SKIP(run);
    EXPECT_EQ(meaning, run.result) << error;
  }
}

}  // namespace
}  // namespace os
