// Do the wrappers do what they say to real files?
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#ifdef _WIN32
#include <io.h>
#endif

#include "platform/files.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::Content;

// A folder of the test's own, gone afterwards.
class NativeFilesTest : public ::testing::Test {
 protected:
  NativeFilesTest() {
    const String name = TempFileName("", "kst");
    EXPECT_FALSE(name.IsEmpty());
    EXPECT_TRUE(FileExists(name));
    EXPECT_TRUE(DeleteFile(name));
    EXPECT_FALSE(FileExists(name));
    folder = Content(name);
    std::filesystem::create_directory(folder);
  }
  ~NativeFilesTest() override { std::filesystem::remove_all(folder); }

  String PathTo(const std::string& name) const { return String((folder + "/" + name).c_str()); }
  void Put(const std::string& name, const std::string& content) const {
    std::ofstream(folder + "/" + name, std::ios::binary) << content;
  }
  std::string Read(const std::string& name) const {
    std::ifstream file(folder + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  // What the seam knows an open file by.
  static os::FileHandle HandleOf(std::FILE* file) {
#ifdef _WIN32
    return reinterpret_cast<os::FileHandle>(_get_osfhandle(_fileno(file)));
#else
    return reinterpret_cast<os::FileHandle>(static_cast<std::intptr_t>(fileno(file)));
#endif
  }

  std::string folder;
};

TEST_F(NativeFilesTest, BytesWrittenThenTheyStandInTheFile) {
  const std::string bytes("a\0b\nc", 5);
  std::FILE* file = std::fopen((folder + "/written").c_str(), "wb");
  ASSERT_NE(nullptr, file);
  EXPECT_TRUE(WriteAll(HandleOf(file), bytes.data(), 5));
  EXPECT_TRUE(WriteAll(HandleOf(file), bytes.data(), 5));
  EXPECT_EQ(10u, FileSize(HandleOf(file)));
  std::fclose(file);
  EXPECT_EQ(bytes + bytes, Read("written"));
}

TEST_F(NativeFilesTest, FilesAroundFourGigabytesThenBothHalvesOfTheirSizes) {
  Put("large", "");
  for (const std::uint64_t size : {0xFFFFFFFEull, 0xFFFFFFFFull, 0x100000000ull, 0x1FFFFFFFFull}) {
    std::filesystem::resize_file(folder + "/large", size);
    std::FILE* file = std::fopen((folder + "/large").c_str(), "rb");
    ASSERT_NE(nullptr, file);
    std::uint32_t high = 9;
    EXPECT_EQ(static_cast<std::uint32_t>(size), os::Native().GetFileSize(HandleOf(file), &high));
    EXPECT_EQ(size >> 32, high);
    std::fclose(file);
  }
}

TEST_F(NativeFilesTest, FileOpenForReadingThenWritingFails) {
  Put("read", "content");
  std::FILE* file = std::fopen((folder + "/read").c_str(), "rb");
  ASSERT_NE(nullptr, file);
  EXPECT_FALSE(WriteAll(HandleOf(file), "x", 1));
  std::fclose(file);
  EXPECT_EQ("content", Read("read"));
}

TEST_F(NativeFilesTest, FileAndDirectoryThenBothExist) {
  Put("file", "");
  EXPECT_TRUE(FileExists(PathTo("file")));
  EXPECT_TRUE(FileExists(String(folder.c_str())));
  EXPECT_FALSE(FileExists(PathTo("missing")));
  EXPECT_FALSE(FileExists(String()));
}

TEST_F(NativeFilesTest, CopyThenTheDestinationIsReplaced) {
  Put("source", "new");
  Put("destination", "old content");
  EXPECT_TRUE(CopyFile(PathTo("destination"), PathTo("source")));
  EXPECT_EQ("new", Read("destination"));
  EXPECT_EQ("new", Read("source"));
  EXPECT_FALSE(CopyFile(PathTo("destination"), PathTo("missing")));
}

TEST_F(NativeFilesTest, DeletionThenTheFileIsGone) {
  Put("file", "content");
  EXPECT_TRUE(DeleteFile(PathTo("file")));
  EXPECT_FALSE(FileExists(PathTo("file")));
  EXPECT_FALSE(DeleteFile(PathTo("file")));
}

TEST_F(NativeFilesTest, DirectoriesThenTheyAreThere) {
  const String path = PathTo("a\\b/c");
  std::int32_t separators = 0;
  for (std::uint32_t i = 0; i < path.Length(); ++i) separators += path.At(i) == '/' || path.At(i) == '\\' ? 1 : 0;
  EXPECT_EQ(separators, MakeDirectories(path));
  EXPECT_TRUE(std::filesystem::is_directory(folder + "/a/b/c"));
  EXPECT_EQ(separators, MakeDirectories(path));
}

TEST_F(NativeFilesTest, AFileStandsWhereADirectoryShouldThenMinusOne) {
  Put("a", "content");
  EXPECT_EQ(-1, MakeDirectories(PathTo("a/b")));
}

TEST_F(NativeFilesTest, TempFilesInADirectoryThenEachHasANewName) {
  const String first = TempFileName(String(folder.c_str()), "kst");
  const String second = TempFileName(String(folder.c_str()), "kst");
  EXPECT_TRUE(FileExists(first));
  EXPECT_TRUE(FileExists(second));
  EXPECT_NE(Content(first), Content(second));
  EXPECT_TRUE(std::filesystem::equivalent(folder, std::filesystem::path(Content(first)).parent_path()));
}

TEST_F(NativeFilesTest, TempFileInAMissingDirectoryThenEmpty) {
  EXPECT_TRUE(TempFileName(PathTo("missing"), "kst").IsEmpty());
}

TEST_F(NativeFilesTest, DirectoriesOfTheSystemThenTheyExistWhereThereAreAny) {
  EXPECT_TRUE(FileExists(TempPath()));
  for (const String& directory : {WindowsDirectory(), SystemDirectory()}) {
#ifdef _WIN32
    EXPECT_TRUE(FileExists(directory)) << directory.Text();
#else
    EXPECT_TRUE(directory.IsEmpty()) << directory.Text();
#endif
  }
}

}  // namespace
}  // namespace kest
