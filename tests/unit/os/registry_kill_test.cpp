// A process is killed at every point of a change of the registry: the change happened or it did not, and nothing else
// has changed.
#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "unit/os/interrupted_write.h"

namespace os {
namespace {

using Strings = std::vector<std::string>;

TEST_F(InterruptedWrite, AReplacedValueIsTheOldOrTheNewOneWhereverTheWriterIsKilled) {
  int stop = 0, oldOnes = 0, newOnes = 0, unfinished = 0;
  for (bool isKilled = true; isKilled;) {
    Meddling meddling;
    meddling.killAtStop = ++stop;
    const TracedRun run = RunTraced([&] { return Replace(); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isKilled = run.wasKilled;
    ASSERT_NE(IsOld(), IsNew()) << "killed at stop " << stop;
    ASSERT_TRUE(isKilled || IsNew());
    (IsOld() ? oldOnes : newOnes)++;
    unfinished += Unfinished() != 0;
    ExpectTheRestIntact();
    EXPECT_EQ(errorSuccess, Replace());
    EXPECT_TRUE(IsNew());
    OpenedKey writer;
    EXPECT_EQ(errorSuccess, writer.Create(CurrentUser(), path.c_str()));
    EXPECT_EQ(0u, Unfinished()) << "killed at stop " << stop;
    Prepare();
  }
  std::printf(
      "killed at each of %d stops: %d times the old value stood, %d times the new one; %d times a file was left\n",
      stop - 1, oldOnes, newOnes, unfinished);
  EXPECT_GT(oldOnes, 20);
  EXPECT_GT(newOnes, 1);
  EXPECT_GT(unfinished, 5);
}

TEST_F(InterruptedWrite, ANewValueIsWholeOrMissingWhereverTheWriterIsKilled) {
  int stop = 0, missing = 0, whole = 0;
  for (bool isKilled = true; isKilled;) {
    OpenedKey place;
    ASSERT_EQ(errorSuccess, place.Create(key, std::to_string(++stop).c_str()));
    Meddling meddling;
    meddling.killAtStop = stop;
    const TracedRun run = RunTraced([&] { return Set(place, "New", typeBinary, newData); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isKilled = run.wasKilled;
    const StoredValue found = Get(place, "new");
    if (found.error == errorFileNotFound) {
      ++missing;
      EXPECT_EQ(Strings{}, ValueNames(place));
    } else {
      ++whole;
      ASSERT_TRUE(found == (StoredValue{errorSuccess, typeBinary, newData})) << "killed at stop " << stop;
      EXPECT_EQ(Strings{"New"}, ValueNames(place));
    }
    ASSERT_EQ(errorSuccess, Set(place, "New", typeBinary, oldData));
    EXPECT_EQ(oldData, Get(place, "New").data);
  }
  std::printf("killed at each of %d stops: %d times there was no value, %d times it was whole\n", stop - 1, missing,
              whole);
  EXPECT_GT(missing, 10);
  EXPECT_GT(whole, 1);
}

TEST_F(InterruptedWrite, ANewKeyHasItsNameOrIsMissingWhereverTheMakerIsKilled) {
  int stop = 0, missing = 0, made = 0;
  for (bool isKilled = true; isKilled;) {
    const std::string name = "New Key " + std::to_string(++stop), inner = name + "\\Inner";
    Meddling meddling;
    meddling.killAtStop = stop;
    const TracedRun run = RunTraced(
        [&] {
          OpenedKey child;
          return child.Create(key, inner.c_str());
        },
        meddling);
    KEST_TRACED_OR_SKIP(run);
    isKilled = run.wasKilled;
    OpenedKey found, again;
    const std::int32_t error = found.Open(key, name.c_str());
    EXPECT_EQ(error == errorSuccess ? Strings{name} : Strings{}, KeyNames(key)) << "killed at stop " << stop;
    (error == errorSuccess ? made : missing)++;
    ASSERT_EQ(errorSuccess, again.Create(key, inner.c_str()));
    EXPECT_EQ(Strings{name}, KeyNames(key));
    std::filesystem::path folder(store);
    for (const auto& file : std::filesystem::recursive_directory_iterator(store)) {
      if (file.path().filename() == "new key " + std::to_string(stop)) folder = file.path();
    }
    ASSERT_NE(store, folder);
    std::filesystem::remove_all(folder);
  }
  OpenedKey writer;
  EXPECT_EQ(errorSuccess, writer.Create(CurrentUser(), path.c_str()));
  EXPECT_EQ(0u, Unfinished());
  std::printf("killed at each of %d stops: %d times there was no key, %d times it had its name\n", stop - 1, missing,
              made);
  EXPECT_GT(missing, 20);
  EXPECT_GT(made, 20);
}

std::string NameOf(const TracedCall& call) {
  const std::string file = std::filesystem::path(call.file).filename().string();
  const std::string which = file.substr(0, 5) == ".new-" ? "the new file" : "the key";
  switch (call.number) {
    case SYS_write:
      return "write " + which;
    case SYS_fsync:
      return "flush " + which;
    case SYS_mkdirat:
      return "make";
    case SYS_renameat:
    case SYS_renameat2:
      return "rename";
    default:
      return "";
  }
}

// What a run did to files of the store, in its order; what it did several times in a row stands once.
Strings Order(const TracedRun& run, const std::string& store) {
  Strings order;
  for (const TracedCall& call : run.calls) {
    const std::string name = call.file.substr(0, store.size()) == store ? NameOf(call) : "";
    if (!name.empty() && (order.empty() || order.back() != name)) order.push_back(name);
  }
  return order;
}

TEST_F(InterruptedWrite, BytesAreFlushedBeforeTheRenameAndTheKeyAfterIt) {
  const TracedRun run = RunTraced([&] { return Replace(); });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ((Strings{"write the new file", "flush the new file", "rename", "flush the key"}), Order(run, store));
}

TEST_F(InterruptedWrite, AKeyIsFlushedIntoTheOneAboveWhoeverMadeIt) {
  const auto create = [&](const char* name) {
    return RunTraced([&] {
      OpenedKey made;
      return made.Create(key, name);
    });
  };
  const TracedRun plain = create("plain"), named = create("Named"), again = create("Named");
  KEST_TRACED_OR_SKIP(plain);
  EXPECT_EQ((Strings{"make", "rename", "flush the key"}), Order(plain, store));
  EXPECT_EQ((Strings{"make", "write the new file", "flush the new file", "rename", "flush the new file", "rename",
                     "flush the key"}),
            Order(named, store));
  EXPECT_EQ(Strings{"flush the key"}, Order(again, store));
}

TEST_F(InterruptedWrite, EachDirectoryOfANewStoreIsFlushed) {
  setenv("KESTAPI_REGISTRY", (store + "/new/deep").c_str(), 1);
  const TracedRun run = RunTraced([] {
    OpenedKey made;
    return made.Create(CurrentUser(), "");
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ((Strings{"make", "flush the key", "make", "flush the key", "make", "rename", "flush the key"}),
            Order(run, store));
}

}  // namespace
}  // namespace os
