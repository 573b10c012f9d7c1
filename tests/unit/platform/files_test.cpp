// What do the wrappers ask the system for, and what do they make of its answers?
#include "platform/files.h"

#include <algorithm>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "core/exception.h"
#include "support/registry_fixture.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::Content;
using Calls = std::vector<std::string>;

// Answers what a test says, and writes every call down with its arguments.
class ScriptedFiles : public testing::ForwardingSystem {
 public:
  using ForwardingSystem::ForwardingSystem;

  Calls calls;
  std::vector<std::uint32_t> steps;  // what each WriteFile writes; a further one writes everything
  bool isFailing = false;
  std::uint32_t sizeLow = 0, sizeHigh = 0, attributes = 0x10;
  std::set<std::string> existing;
  std::string directory;          // what the calls for a directory put into the buffer
  std::uint32_t needed = 0;       // the length that they answer instead of doing so
  std::uint32_t tempFileNumber = 1;

  bool CreateDirectoryA(const char* path) override {
    calls.push_back("create " + std::string(path));
    return false;
  }
  bool WriteFile(os::FileHandle file, const void* bytes, std::uint32_t count, std::uint32_t* written) override {
    EXPECT_EQ(this, file);
    calls.push_back("write " + std::string(static_cast<const char*>(bytes), count));
    *written = calls.size() <= steps.size() ? steps[calls.size() - 1] : count;
    return !isFailing;
  }
  std::uint32_t GetFileSize(os::FileHandle, std::uint32_t* high) override { return *high = sizeHigh, sizeLow; }
  std::uint32_t GetFileAttributesA(const char* path) override { return Log("attributes", path), attributes; }
  bool CopyFileA(const char* from, const char* to, bool failIfExists) override {
    calls.push_back(std::string("copy ") + from + " to " + to + (failIfExists ? " unless there" : ""));
    return !isFailing;
  }
  bool DeleteFileA(const char* path) override { return Log("delete", path), !isFailing; }
  int _access(const char* path, int mode) override {
    EXPECT_EQ(0, mode);
    Log("access", path);
    return existing.count(path) != 0 ? 0 : -1;
  }
  std::uint32_t GetTempPathA(std::uint32_t capacity, char* buffer) override { return Give("temp", buffer, capacity); }
  std::uint32_t GetWindowsDirectoryA(char* buffer, std::uint32_t capacity) override {
    return Give("windows", buffer, capacity);
  }
  std::uint32_t GetSystemDirectoryA(char* buffer, std::uint32_t capacity) override {
    return Give("system", buffer, capacity);
  }
  std::uint32_t GetTempFileNameA(const char* place, const char* prefix, std::uint32_t unique, char* name) override {
    calls.push_back("temp file " + std::string(place) + " " + prefix + " " + std::to_string(unique));
    if (tempFileNumber != 0) std::strcpy(name, (std::string(place) + prefix + "1.TMP").c_str());
    return tempFileNumber;
  }

 private:
  void Log(const char* call, const char* path) { calls.push_back(std::string(call) + " " + path); }
  std::uint32_t Give(const char* call, char* buffer, std::uint32_t capacity) {
    calls.push_back(std::string(call) + " " + std::to_string(capacity));
    // A failing call may leave anything behind.
    std::memset(buffer, 'g', capacity);
    if (needed != 0 || directory.empty()) return needed;
    std::memcpy(buffer, directory.c_str(), directory.size() + 1);
    return static_cast<std::uint32_t>(directory.size());
  }
};

class FilesTest : public testing::RegistryTest {
 protected:
  FilesTest() : filesInForce(system) {}

  ScriptedFiles system{registry};
  testing::SystemInForce filesInForce;
};

TEST_F(FilesTest, NoBytesToWriteThenTrueAtOnce) {
  system.isFailing = true;
  EXPECT_TRUE(WriteAll(&system, nullptr, 0));
  EXPECT_TRUE(system.calls.empty());
}

TEST_F(FilesTest, BytesWrittenInPartsThenEachCallGetsTheRest) {
  system.steps = {2, 3};
  EXPECT_TRUE(WriteAll(&system, "abcdefg", 7));
  EXPECT_EQ((Calls{"write abcdefg", "write cdefg", "write fg"}), system.calls);
}

TEST_F(FilesTest, AWriteFailsThenFalseAtOnce) {
  system.isFailing = true;
  EXPECT_FALSE(WriteAll(&system, "abc", 3));
  EXPECT_EQ(1u, system.calls.size());
}

TEST_F(FilesTest, AWriteWritesNothingThenFalseAtOnce) {
  system.steps = {1, 0};
  EXPECT_FALSE(WriteAll(&system, "abc", 3));
  EXPECT_EQ(2u, system.calls.size());
}

TEST_F(FilesTest, AWriteClaimsMoreThanItGotThenTrueAndNoFurtherOne) {
  system.steps = {4};
  EXPECT_TRUE(WriteAll(&system, "abc", 3));
  EXPECT_EQ(1u, system.calls.size());
}

TEST_F(FilesTest, SizeThenBothHalvesOfIt) {
  system.sizeLow = 0xFFFFFFFE;
  system.sizeHigh = 3;
  EXPECT_EQ(0x3FFFFFFFEull, FileSize(&system));
}

TEST_F(FilesTest, AnyAttributesThenThePathExists) {
  EXPECT_TRUE(FileExists("a\\directory"));
  system.attributes = 0;
  EXPECT_TRUE(FileExists("a\\file"));
  EXPECT_EQ((Calls{"attributes a\\directory", "attributes a\\file"}), system.calls);
  system.attributes = 0xFFFFFFFF;
  EXPECT_FALSE(FileExists("missing"));
}

TEST_F(FilesTest, CopyThenTheDestinationComesFirstAndIsReplaced) {
  EXPECT_TRUE(CopyFile("destination", "source"));
  EXPECT_EQ((Calls{"copy source to destination"}), system.calls);
  system.isFailing = true;
  EXPECT_FALSE(CopyFile("destination", "source"));
}

TEST_F(FilesTest, DeletionThenTheSystemsAnswer) {
  EXPECT_TRUE(DeleteFile("a\\file"));
  EXPECT_EQ((Calls{"delete a\\file"}), system.calls);
  system.isFailing = true;
  EXPECT_FALSE(DeleteFile("a\\file"));
}

TEST_F(FilesTest, DirectoriesThenEachPrefixWithBackslashesAndThenTheWholePath) {
  system.existing = {"a/b/c"};
  EXPECT_EQ(2, MakeDirectories("a/b/c"));
  EXPECT_EQ((Calls{"create a", "create a\\b", "create a/b/c", "access a/b/c"}), system.calls);
}

TEST_F(FilesTest, DirectoryIsNotThereInTheEndThenMinusOne) { EXPECT_EQ(-1, MakeDirectories("a/b/c")); }

TEST_F(FilesTest, DriveThenItIsTriedFirst) {
  system.existing = {"C:\\a/b"};
  EXPECT_EQ(2, MakeDirectories("C:\\a/b"));
  EXPECT_EQ((Calls{"create C:", "create C:\\a", "create C:\\a/b", "access C:\\a/b"}), system.calls);
}

TEST_F(FilesTest, SeparatorsAtTheEndsAndTogetherThenEachCounts) {
  system.existing = {"\\a//b/"};
  EXPECT_EQ(4, MakeDirectories("\\a//b/"));
  EXPECT_EQ((Calls{"create ", "create \\a", "create \\a\\", "create \\a\\\\b", "create \\a//b/", "access \\a//b/"}),
            system.calls);
}

TEST_F(FilesTest, OneDirectoryThenNoSeparators) {
  system.existing = {"a"};
  EXPECT_EQ(0, MakeDirectories("a"));
}

TEST_F(FilesTest, NoPathThenMinusOne) {
  EXPECT_EQ(-1, MakeDirectories(String()));
  EXPECT_EQ(-1, MakeDirectories(""));
}

TEST_F(FilesTest, DirectoryOfTheSystemThenItsPath) {
  system.directory = "C:\\PLACE\\";
  EXPECT_EQ("C:\\PLACE\\", Content(TempPath()));
  EXPECT_EQ("C:\\PLACE\\", Content(WindowsDirectory()));
  EXPECT_EQ("C:\\PLACE\\", Content(SystemDirectory()));
  EXPECT_EQ((Calls{"temp 260", "windows 260", "system 260"}), system.calls);
}

TEST_F(FilesTest, LongestPathThenAllOfIt) {
  system.directory = std::string(259, 'd');
  EXPECT_EQ(system.directory, Content(TempPath()));
}

TEST_F(FilesTest, DirectoryOfTheSystemIsMissingOrTooLongThenEmpty) {
  for (const std::uint32_t length : {0u, 260u, 261u, 0xFFFFFFFFu}) {
    system.needed = length;
    EXPECT_TRUE(TempPath().IsEmpty()) << length;
    EXPECT_TRUE(WindowsDirectory().IsEmpty()) << length;
    EXPECT_TRUE(SystemDirectory().IsEmpty()) << length;
  }
}

TEST_F(FilesTest, TempFileInADirectoryThenItsName) {
  EXPECT_EQ("D:\\kst1.TMP", Content(TempFileName("D:\\", "kst")));
  EXPECT_EQ((Calls{"temp file D:\\ kst 0"}), system.calls);
}

TEST_F(FilesTest, TempFileWithoutADirectoryThenInThatForTemporaryFiles) {
  system.directory = "T:\\";
  EXPECT_EQ("T:\\kst1.TMP", Content(TempFileName("", "kst")));
  EXPECT_EQ("T:\\1.TMP", Content(TempFileName(String(), String())));
  EXPECT_EQ((Calls{"temp 260", "temp file T:\\ kst 0", "temp 260", "temp file T:\\  0"}), system.calls);
}

TEST_F(FilesTest, NoDirectoryForTheTempFileThenEmpty) {
  EXPECT_TRUE(TempFileName("", "kst").IsEmpty());
  EXPECT_EQ((Calls{"temp 260"}), system.calls);
}

TEST_F(FilesTest, TempFileRefusedThenEmpty) {
  system.tempFileNumber = 0;
  EXPECT_TRUE(TempFileName("D:\\", "kst").IsEmpty());
}

TEST_F(FilesTest, ProgramFilesThenTheMachinesSetting) {
  const std::string path = "HKLM\\Software\\Microsoft\\Windows\\CurrentVersion";
  registry.Put(path, "ProgramFilesDir", std::string("C:\\Programs") + '\0');
  EXPECT_EQ("C:\\Programs", Content(ProgramFilesDirectory()));
  EXPECT_EQ("open read " + path, registry.calls.at(0));
}

TEST_F(FilesTest, NoSettingForProgramFilesThenEmpty) {
  EXPECT_TRUE(ProgramFilesDirectory().IsEmpty());
  registry.Put("HKLM\\Software\\Microsoft\\Windows\\CurrentVersion");
  EXPECT_TRUE(ProgramFilesDirectory().IsEmpty());
}

TEST_F(FilesTest, MemoryEndsAtAnyPointThenTheExceptionAndNothingIsLeftBehind) {
  system.directory = "T:\\";
  registry.Put("HKLM\\Software\\Microsoft\\Windows\\CurrentVersion", "ProgramFilesDir", "C:");
  const String path("a/b"), none;
  const std::int64_t before = memory.Outstanding();
  const auto runAll = [&] {
    MakeDirectories(path);
    TempFileName(none, none);
    WindowsDirectory();
    ProgramFilesDirectory();
  };
  std::uint64_t point = 0;
  for (bool isDone = false; !isDone;) {
    memory.FailAt(++point, testing::AllocationSystem::Failing::once);
    try {
      runAll();
      isDone = true;
    } catch (const Qor::MemoryException&) {
    }
    memory.FailNever();
    EXPECT_EQ(before, memory.Outstanding()) << point;
    EXPECT_EQ(0u, registry.OpenHandles()) << point;
    ASSERT_GT(50u, point);
  }
  EXPECT_LT(4u, point);
}

}  // namespace
}  // namespace kest
