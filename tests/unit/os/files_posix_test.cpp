// What the file calls do on POSIX systems beyond what every system promises.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "os/os.h"
#include "unit/os/traced_child.h"

namespace os {
namespace {

namespace fs = std::filesystem;

FileHandle Handle(int descriptor) {
  return reinterpret_cast<FileHandle>(static_cast<std::intptr_t>(descriptor));
}

class PosixFiles : public ::testing::Test {
 protected:
  PosixFiles() {
    char made[] = "/tmp/kest-files-XXXXXX";  // mkdtemp fills the X in
    EXPECT_NE(nullptr, mkdtemp(made));
    folder = made;
  }
  ~PosixFiles() override { fs::remove_all(folder); }

  std::string Path(const char* name) const { return folder + "/" + name; }
  std::string Make(const char* name, const std::string& bytes) const {
    std::ofstream(Path(name), std::ios::binary) << bytes;
    return Path(name);
  }
  std::string Read(const char* name) const {
    std::ifstream file(Path(name), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::size_t Count() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }
  mode_t Mode(const char* name) const {
    struct stat status {};
    EXPECT_EQ(0, stat(Path(name).c_str(), &status));
    return status.st_mode & 07777;
  }

  std::string folder;
};

TEST_F(PosixFiles, BackslashesSeparateAndStandInNoName) {
  EXPECT_TRUE(Native().CreateDirectoryA((folder + "\\a").c_str()));
  EXPECT_TRUE(Native().CreateDirectoryA((folder + "\\a\\b").c_str()));
  EXPECT_TRUE(fs::is_directory(folder + "/a/b"));
  EXPECT_EQ(1u, Count());
}

TEST_F(PosixFiles, DirectoriesFollowTheMask) {
  const mode_t old = umask(027);
  EXPECT_TRUE(Native().CreateDirectoryA(Path("new").c_str()));
  umask(old);
  EXPECT_EQ(0750u, Mode("new"));
}

// A path of `length` characters that leads to the folder.
std::string LongPath(const std::string& folder, std::size_t length) {
  std::string path = folder;
  if ((length - path.size()) % 2 != 0) path += "/";
  while (path.size() < length) path += "/.";
  return path;
}

TEST_F(PosixFiles, APathMayHaveAsManyCharactersAsTheSystemTakes) {
  EXPECT_EQ(0x10u, Native().GetFileAttributesA(LongPath(folder, PATH_MAX - 1).c_str()));
  EXPECT_EQ(invalidFileAttributes, Native().GetFileAttributesA(LongPath(folder, PATH_MAX).c_str()));
}

TEST_F(PosixFiles, NoPathLeadsNowhere) {
  const std::string tooLong(5000, 'a');
  for (const char* path : {static_cast<const char*>(nullptr), "", tooLong.c_str()}) {
    EXPECT_FALSE(Native().CreateDirectoryA(path));
    EXPECT_FALSE(Native().DeleteFileA(path));
    EXPECT_FALSE(Native().CopyFileA(path, Path("to").c_str(), false));
    EXPECT_EQ(invalidFileAttributes, Native().GetFileAttributesA(path));
    EXPECT_EQ(-1, Native()._access(path, 0));
  }
  EXPECT_FALSE(Native().CopyFileA(Make("from", "x").c_str(), nullptr, false));
  EXPECT_EQ(1u, Count());
}

TEST_F(PosixFiles, AttributesTellWhatMayBeWritten) {
  const std::string file = Make("file", "");
  EXPECT_EQ(0x80u, Native().GetFileAttributesA(file.c_str()));
  chmod(file.c_str(), 0444);
  EXPECT_EQ(0x01u, Native().GetFileAttributesA(file.c_str()));
  EXPECT_EQ(0x10u, Native().GetFileAttributesA(folder.c_str()));
  chmod(folder.c_str(), 0500);
  EXPECT_EQ(0x11u, Native().GetFileAttributesA(folder.c_str()));
  chmod(folder.c_str(), 0700);
}

TEST_F(PosixFiles, ADescriptorIsWrittenTo) {
  const int file = open(Path("file").c_str(), O_WRONLY | O_CREAT, 0600);
  std::uint32_t written = 9;
  EXPECT_TRUE(Native().WriteFile(Handle(file), "bytes", 5, &written));
  EXPECT_EQ(5u, written);
  EXPECT_TRUE(Native().WriteFile(Handle(file), "", 0, &written));
  EXPECT_EQ(0u, written);
  close(file);
  EXPECT_EQ("bytes", Read("file"));
}

TEST_F(PosixFiles, AFullPipeTakesAPart) {
  int ends[2];
  ASSERT_EQ(0, pipe2(ends, O_NONBLOCK));
  const std::string bytes(1 << 20, 'x');
  std::uint32_t written = 0;
  EXPECT_TRUE(Native().WriteFile(Handle(ends[1]), bytes.data(), 1 << 20, &written));
  EXPECT_GT(written, 0u);
  EXPECT_LT(written, 1u << 20);
  EXPECT_FALSE(Native().WriteFile(Handle(ends[1]), bytes.data(), 1 << 20, &written));
  EXPECT_EQ(0u, written);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(PosixFiles, SizesBeyondFourGigabytesHaveAHighHalf) {
  const int file = open(Path("file").c_str(), O_RDWR | O_CREAT, 0600);
  ASSERT_EQ(0, ftruncate(file, 0x100000005));
  std::uint32_t high = 9;
  EXPECT_EQ(5u, Native().GetFileSize(Handle(file), &high));
  EXPECT_EQ(1u, high);
  close(file);
  high = 9;
  EXPECT_EQ(0xFFFFFFFFu, Native().GetFileSize(Handle(file), &high));
  EXPECT_EQ(0u, high);
}

TEST_F(PosixFiles, APipeHasNoSize) {
  int ends[2];
  ASSERT_EQ(0, pipe(ends));
  std::uint32_t high = 9;
  EXPECT_EQ(0xFFFFFFFFu, Native().GetFileSize(Handle(ends[0]), &high));
  EXPECT_EQ(0u, high);
  close(ends[0]);
  close(ends[1]);
}

TEST_F(PosixFiles, ACopyKeepsThePermissions) {
  const std::string file = Make("file", "x");
  chmod(file.c_str(), 04751);
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), Path("copy").c_str(), false));
  EXPECT_EQ(0751u, Mode("copy"));
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), Path("second").c_str(), true));
  EXPECT_EQ(0751u, Mode("second"));
}

TEST_F(PosixFiles, ACopyDoesNotReplaceWhatTheOwnerMayNotWrite) {
  const std::string file = Make("file", "new"), locked = Make("locked", "old");
  chmod(locked.c_str(), 0444);
  EXPECT_FALSE(Native().CopyFileA(file.c_str(), locked.c_str(), false));
  EXPECT_EQ("old", Read("locked"));
}

TEST_F(PosixFiles, ACopyReplacesWhatALinkLeadsTo) {
  const std::string file = Make("file", "new"), target = Make("target", "old");
  fs::create_symlink(target, Path("link"));
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), Path("link").c_str(), false));
  EXPECT_TRUE(fs::is_symlink(Path("link")));
  EXPECT_EQ("new", Read("target"));
}

TEST_F(PosixFiles, OtherNamesOfAFileAreTheFileItself) {
  const std::string file = Make("file", "bytes");
  fs::create_hard_link(file, Path("hard"));
  fs::create_symlink(file, Path("soft"));
  EXPECT_FALSE(Native().CopyFileA(file.c_str(), Path("hard").c_str(), false));
  EXPECT_FALSE(Native().CopyFileA(file.c_str(), Path("soft").c_str(), false));
  EXPECT_FALSE(Native().CopyFileA(Path("soft").c_str(), file.c_str(), false));
  EXPECT_EQ("bytes", Read("file"));
}

TEST_F(PosixFiles, PipesAreNotCopied) {
  ASSERT_EQ(0, mkfifo(Path("pipe").c_str(), 0600));
  EXPECT_FALSE(Native().CopyFileA(Path("pipe").c_str(), Path("copy").c_str(), false));
  EXPECT_FALSE(Native().CopyFileA(Make("file", "x").c_str(), Path("pipe").c_str(), false));
  EXPECT_EQ(2u, Count());
}

TEST_F(PosixFiles, AFileNamedInTheWorkingDirectoryIsCopiedThere) {
  Make("file", "x");
  ASSERT_EQ(0, chdir(folder.c_str()));
  EXPECT_TRUE(Native().CopyFileA("file", "copy", false));
  EXPECT_EQ(0, chdir("/"));
  EXPECT_EQ("x", Read("copy"));
}

TEST_F(PosixFiles, ACopyNeedsTheDirectoryOfItsName) {
  const std::string from = Make("from", "x");
  EXPECT_FALSE(Native().CopyFileA(from.c_str(), Path("missing/to").c_str(), false));
  EXPECT_FALSE(Native().CopyFileA(from.c_str(), Path("missing/to").c_str(), true));
  EXPECT_EQ(1u, Count());
}

TEST_F(PosixFiles, AFileOfAnotherFileSystemIsCopied) {
  std::ifstream version("/proc/version", std::ios::binary);
  const std::string bytes{std::istreambuf_iterator<char>(version), {}};
  const std::string to = Make("to", "old");
  ASSERT_FALSE(bytes.empty());
  EXPECT_TRUE(Native().CopyFileA("/proc/version", to.c_str(), false));
  EXPECT_EQ(bytes, Read("to"));
}

TEST_F(PosixFiles, ARefusedCallLeavesTheOldCopyOrTheNewOne) {
  const std::string bytes(40000, 'n'), from = Make("from", bytes), to = Make("to", "old");
  const std::vector<long> calls = {SYS_openat, SYS_read, SYS_write, SYS_fstat, SYS_newfstatat, SYS_fchmod};
  bool isReached = true;
  int failures = 0;
  for (Meddling meddling{0, 1, EIO, calls, folder}; isReached; ++meddling.failCall) {
    const TracedRun run = RunTraced([&] { return Native().CopyFileA(from.c_str(), to.c_str(), false); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    failures += isReached;
    EXPECT_EQ(isReached ? 0 : 1, run.result) << "call " << meddling.failCall;
    EXPECT_TRUE(Read("to") == (isReached ? "old" : bytes)) << "call " << meddling.failCall;
    EXPECT_EQ(2u, Count());
  }
  EXPECT_GE(failures, 8);
}

TEST_F(PosixFiles, ARefusedCallLeavesNoNewCopy) {
  const std::string bytes(40000, 'n'), from = Make("from", bytes), to = Path("to");
  bool isReached = true;
  for (Meddling meddling{0, 1, EIO, {SYS_read, SYS_write, SYS_fchmod}, folder}; isReached; ++meddling.failCall) {
    const TracedRun run = RunTraced([&] { return Native().CopyFileA(from.c_str(), to.c_str(), true); }, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    EXPECT_EQ(isReached ? 1u : 2u, Count()) << "call " << meddling.failCall;
  }
  EXPECT_TRUE(Read("to") == bytes);
}

TEST_F(PosixFiles, InterruptedCallsGoOn) {
  const std::string bytes(40000, 'n'), from = Make("from", bytes), to = Path("to");
  bool isReached = true;
  for (Meddling meddling{0, 1, EINTR, {SYS_read, SYS_write}, folder}; isReached; ++meddling.failCall) {
    const auto work = [&] {
      const int file = open(to.c_str(), O_WRONLY | O_APPEND);
      std::uint32_t written = 0;
      return Native().CopyFileA(from.c_str(), to.c_str(), false) &&
             (file < 0 || (Native().WriteFile(Handle(file), "x", 1, &written) && written == 1));
    };
    const TracedRun run = RunTraced(work, meddling);
    KEST_TRACED_OR_SKIP(run);
    isReached = run.refused >= 0;
    EXPECT_EQ(1, run.result) << "call " << meddling.failCall;
    EXPECT_TRUE(Read("to") == bytes);
  }
}

// TMPDIR for the length of a scope.
class TempVariable {
 public:
  explicit TempVariable(const char* value) {
    const char* before = std::getenv("TMPDIR");
    hadOne = before != nullptr;
    if (hadOne) old = before;
    setenv("TMPDIR", value, 1);
  }
  ~TempVariable() { hadOne ? setenv("TMPDIR", old.c_str(), 1) : unsetenv("TMPDIR"); }

 private:
  std::string old;
  bool hadOne;
};

TEST_F(PosixFiles, TheVariableNamesTheTempDirectory) {
  char path[longestPath];
  const TempVariable without(folder.c_str());
  EXPECT_EQ(folder.size() + 1, Native().GetTempPathA(sizeof path, path));
  EXPECT_EQ(folder + "/", path);
  const TempVariable with((folder + "/").c_str());
  EXPECT_EQ(folder.size() + 1, Native().GetTempPathA(sizeof path, path));
  EXPECT_EQ(folder + "/", path);
}

TEST_F(PosixFiles, WithoutAVariableTempFilesLieInTmp) {
  char path[longestPath];
  const TempVariable empty("");
  EXPECT_EQ(5u, Native().GetTempPathA(sizeof path, path));
  EXPECT_STREQ("/tmp/", path);
}

TEST_F(PosixFiles, ATempFileIsTheOwnersAlone) {
  char name[longestPath];
  const mode_t old = umask(0);
  ASSERT_NE(0u, Native().GetTempFileNameA((folder + "\\").c_str(), nullptr, 0, name));
  umask(old);
  EXPECT_EQ(folder, fs::path(name).parent_path());
  EXPECT_EQ(0600u, Mode(fs::path(name).filename().c_str()));
}

TEST_F(PosixFiles, APrefixIsPartOfOneName) {
  char name[longestPath];
  EXPECT_EQ(0u, Native().GetTempFileNameA(folder.c_str(), "../", 0, name));
  EXPECT_EQ(0u, Native().GetTempFileNameA(folder.c_str(), "a\\b", 0, name));
  EXPECT_EQ(0u, Native().GetTempFileNameA("", "a", 0, name));
  EXPECT_NE(0u, Native().GetTempFileNameA(folder.c_str(), "abc/", 0, name));
}

TEST_F(PosixFiles, ATempFileTakesANumberThatIsFree) {
  char name[longestPath];
  for (unsigned number = 1; number <= 0xFFFF; ++number) {
    char taken[16];
    std::snprintf(taken, sizeof taken, "k%04X.tmp", number);
    if (number == 0x1234) continue;
    ASSERT_EQ(0, mknod(Path(taken).c_str(), S_IFREG | 0600, 0));
  }
  EXPECT_EQ(0x1234u, Native().GetTempFileNameA(folder.c_str(), "k", 0, name));
  EXPECT_EQ(0u, Native().GetTempFileNameA(folder.c_str(), "k", 0, name));
}

TEST_F(PosixFiles, ATempFileNameFillsItsAreaAndIsNeverLonger) {
  char name[longestPath];
  // Behind the folder: a separator, three letters, four digits, ".tmp".
  const std::string fits = LongPath(folder, longestPath - 1 - 12), tooLong = LongPath(folder, longestPath - 12);
  ASSERT_NE('/', fits.back());
  EXPECT_EQ(5u, Native().GetTempFileNameA(fits.c_str(), "kest", 5, name));
  EXPECT_EQ(fits + "/kes0005.tmp", name);
  EXPECT_EQ(7u, Native().GetTempFileNameA(folder.c_str(), nullptr, 7, name));
  EXPECT_EQ(folder + "/0007.tmp", name);
  EXPECT_EQ(6u, Native().GetTempFileNameA((fits + "/").c_str(), "kest", 6, name));
  EXPECT_EQ(fits + "/kes0006.tmp", name);
  EXPECT_EQ(0u, Native().GetTempFileNameA((fits + "x").c_str(), "kest", 5, name));
  EXPECT_EQ(0u, Native().GetTempFileNameA(tooLong.c_str(), "kest", 0, name));
}

TEST_F(PosixFiles, LinuxHasNoDirectoriesOfWindows) {
  char path[longestPath];
  EXPECT_EQ(0u, Native().GetWindowsDirectoryA(path, sizeof path));
  EXPECT_EQ(0u, Native().GetSystemDirectoryA(path, sizeof path));
}

}  // namespace
}  // namespace os
