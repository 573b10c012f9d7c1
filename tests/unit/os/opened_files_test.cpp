// How files, directories and sockets are opened: programs that a host starts inherit none of them, nothing that lies in
// wait under a name is followed or waited for, and no name is tried twice.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/socket.h>

#include <filesystem>
#include <fstream>

#include "unit/os/interrupted_write.h"

namespace os {
namespace {

using ::testing::Contains;
using ::testing::Each;

class OpenedFiles : public InterruptedWrite {};

// The flags of each file that a child opened; what it made must be its owner's alone.
std::vector<int> FlagsOf(const TracedRun& run) {
  std::vector<int> flags;
  for (const TracedCall& call : run.calls) {
    if (call.number != SYS_openat) continue;
    flags.push_back(static_cast<int>(call.arguments[2]));
    if ((flags.back() & O_CREAT) == 0) continue;
    EXPECT_EQ(0600u, call.arguments[3]);
  }
  return flags;
}

MATCHER(LeadsOn, "is a directory's, and no started program's") {
  return (arg & (O_DIRECTORY | O_CLOEXEC | O_ACCMODE | O_CREAT)) == (O_DIRECTORY | O_CLOEXEC | O_RDONLY);
}
MATCHER(IsMade, "makes a file of that name or fails") {
  return arg == (O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC);
}
MATCHER(IsReadWithoutTrust, "neither follows a link nor waits for a writer, nor takes a terminal") {
  return arg == (O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

TEST_F(OpenedFiles, WritingAValueOpensEachAsItMust) {
  // A leftover is looked at on the way.
  std::ofstream(store + "/HKEY_CURRENT_USER/.new-1-1") << "x";
  const TracedRun run = RunTraced([&] {
    OpenedKey opened;
    return opened.Create(CurrentUser(), path.c_str()) + Set(opened, "Value", typeString, "data");
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_THAT(FlagsOf(run), Each(::testing::AnyOf(LeadsOn(), IsMade(), IsReadWithoutTrust())));
  EXPECT_THAT(FlagsOf(run), Contains(LeadsOn()));
  EXPECT_THAT(FlagsOf(run), Contains(IsMade()).Times(1));
}

TEST_F(OpenedFiles, MakingAKeyOpensEachAsItMust) {
  const TracedRun run = RunTraced([&] {
    OpenedKey made;
    return made.Create(key, "A Name With Capitals");
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_THAT(FlagsOf(run), Each(::testing::AnyOf(LeadsOn(), IsMade())));
  EXPECT_THAT(FlagsOf(run), Contains(IsMade()).Times(1));
  EXPECT_THAT(FlagsOf(run), Contains(LeadsOn()));
}

TEST_F(OpenedFiles, ReadingAndListingOpensEachAsItMust) {
  OpenedKey made;
  ASSERT_EQ(errorSuccess, made.Create(key, "A Name With Capitals"));
  const TracedRun run = RunTraced([&] {
    const bool isRead = Get(key, "Value").error == errorSuccess;
    return isRead && ValueNames(key).size() == 2 && KeyNames(key).size() == 1;
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_THAT(FlagsOf(run), Each(::testing::AnyOf(LeadsOn(), IsReadWithoutTrust())));
  EXPECT_THAT(FlagsOf(run), Contains(IsReadWithoutTrust()));
  EXPECT_THAT(FlagsOf(run), Contains(LeadsOn()));
}

TEST_F(OpenedFiles, ACopyIsMadeOfWhatIsNotWaitedFor) {
  const std::string from = store + "/from", to = store + "/to";
  std::ofstream(from) << "x";
  TracedRun run = RunTraced([&] { return Native().CopyFileA(from.c_str(), to.c_str(), true); });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ((std::vector<int>{O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC}),
            FlagsOf(run));
  run = RunTraced([&] { return Native().CopyFileA(from.c_str(), to.c_str(), false); });
  // The name beside the destination is mkostemp's, which asks for both.
  EXPECT_EQ((std::vector<int>{O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC}),
            FlagsOf(run));
}

TEST_F(OpenedFiles, ATemporaryFileIsMade) {
  char name[4096];
  const TracedRun run = RunTraced([&] { return Native().GetTempFileNameA(store.c_str(), "a", 0, name) != 0; });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_THAT(FlagsOf(run), ::testing::ElementsAre(IsMade()));
}

TEST_F(OpenedFiles, WhereNoTemporaryFileCanBeMadeOneNameIsTried) {
  char name[4096];
  const std::string nowhere = store + "/nowhere";
  const TracedRun run = RunTraced([&] { return Native().GetTempFileNameA(nowhere.c_str(), "a", 0, name) != 0; });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_THAT(FlagsOf(run), ::testing::ElementsAre(IsMade()));
}

TEST_F(OpenedFiles, AccessIsAskedForReadingAndWritingAlone) {
  const TracedRun run = RunTraced([this] {
    for (int mode = 0; mode < 8; ++mode) Native()._access(store.c_str(), mode);
    return 0;
  });
  KEST_TRACED_OR_SKIP(run);
  std::vector<int> modes;
  for (const TracedCall& call : run.calls) {
    if (call.number == SYS_access) modes.push_back(static_cast<int>(call.arguments[1]));
  }
  EXPECT_EQ((std::vector<int>{0, 0, 2, 2, 4, 4, 6, 6}), modes);
}

TEST_F(OpenedFiles, NoStartedProgramInheritsASocket) {
  const TracedRun run = RunTraced([] {
    const Socket socket = Native().socket(addressFamilyInet, socketTypeStream, 0);
    return Native().closesocket(socket);
  });
  KEST_TRACED_OR_SKIP(run);
  std::vector<int> types;
  for (const TracedCall& call : run.calls) {
    if (call.number == SYS_socket) types.push_back(static_cast<int>(call.arguments[1]));
  }
  EXPECT_EQ(std::vector<int>{SOCK_STREAM | SOCK_CLOEXEC}, types);
}

}  // namespace
}  // namespace os
