// The file calls, as every system makes them: in a folder of the test's own.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "os/os.h"

namespace os {
namespace {

namespace fs = std::filesystem;

std::string Small(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
  return text;
}

class Files : public ::testing::Test {
 protected:
  Files() {
    char temp[longestPath];
    EXPECT_NE(0u, Native().GetTempPathA(sizeof temp, temp));
    folder = temp + ("kest-files-" + std::to_string(Native().GetCurrentProcessId()));
    EXPECT_TRUE(Native().CreateDirectoryA(folder.c_str()));
  }
  ~Files() override { fs::remove_all(folder); }

  // A file of the folder, with the separator that Windows has.
  std::string Path(const char* name) const { return folder + "\\" + name; }
  std::string Make(const char* name, const std::string& bytes) const {
    std::ofstream(folder + "/" + name, std::ios::binary) << bytes;
    return Path(name);
  }
  std::string Read(const char* name) const {
    std::ifstream file(folder + "/" + name, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }
  std::size_t Count() const {
    return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder), fs::directory_iterator()));
  }

  std::string folder;
};

TEST_F(Files, ADirectoryIsMadeOnce) {
  EXPECT_TRUE(Native().CreateDirectoryA(Path("new").c_str()));
  EXPECT_TRUE(fs::is_directory(folder + "/new"));
  EXPECT_FALSE(Native().CreateDirectoryA(Path("new").c_str()));
}

TEST_F(Files, ADirectoryNeedsTheOneAbove) {
  EXPECT_FALSE(Native().CreateDirectoryA(Path("missing\\new").c_str()));
  EXPECT_FALSE(Native().CreateDirectoryA(""));
}

TEST_F(Files, BothSeparatorsLeadToAFile) {
  ASSERT_TRUE(Native().CreateDirectoryA(Path("sub").c_str()));
  const std::string file = Make("sub/file", "x");
  EXPECT_EQ(0, Native()._access(file.c_str(), 0));
  EXPECT_EQ(0, Native()._access(Path("sub\\file").c_str(), 0));
}

TEST_F(Files, WhatDoesNotExistIsSeenToBeMissing) {
  EXPECT_EQ(-1, Native()._access(Path("missing").c_str(), 0));
  EXPECT_EQ(invalidFileAttributes, Native().GetFileAttributesA(Path("missing").c_str()));
  EXPECT_FALSE(Native().DeleteFileA(Path("missing").c_str()));
  EXPECT_FALSE(Native().CopyFileA(Path("missing").c_str(), Path("copy").c_str(), false));
  EXPECT_EQ(0u, Count());
}

TEST_F(Files, AttributesTellDirectoriesFromFiles) {
  constexpr std::uint32_t directory = 0x10;
  const std::uint32_t ofFile = Native().GetFileAttributesA(Make("file", "").c_str());
  EXPECT_NE(invalidFileAttributes, ofFile);
  EXPECT_EQ(0u, ofFile & directory);
  EXPECT_EQ(directory, Native().GetFileAttributesA(folder.c_str()) & directory);
}

TEST_F(Files, WhatIsNotOpenHasNoSize) {
  std::uint32_t high = 7;
  EXPECT_EQ(0xFFFFFFFFu, Native().GetFileSize(reinterpret_cast<FileHandle>(std::intptr_t{-1}), &high));
  EXPECT_EQ(0u, high);
}

TEST_F(Files, DeletingTakesAFileAway) {
  const std::string file = Make("file", "x");
  EXPECT_TRUE(Native().DeleteFileA(file.c_str()));
  EXPECT_EQ(0u, Count());
}

TEST_F(Files, DeletingLeavesDirectories) {
  ASSERT_TRUE(Native().CreateDirectoryA(Path("empty").c_str()));
  EXPECT_FALSE(Native().DeleteFileA(Path("empty").c_str()));
  EXPECT_TRUE(fs::is_directory(folder + "/empty"));
}

TEST_F(Files, ACopyHoldsTheSameBytes) {
  std::string bytes(100000, '\0');
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<char>(i * i >> 4);
  const std::string file = Make("file", bytes);
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), Path("copy").c_str(), false));
  EXPECT_TRUE(bytes == Read("copy"));
  EXPECT_TRUE(bytes == Read("file"));
  EXPECT_EQ(2u, Count());
}

TEST_F(Files, ACopyReplacesUnlessToldNotTo) {
  const std::string file = Make("file", "new"), other = Make("other", "the old bytes");
  EXPECT_FALSE(Native().CopyFileA(file.c_str(), other.c_str(), true));
  EXPECT_EQ("the old bytes", Read("other"));
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), other.c_str(), false));
  EXPECT_EQ("new", Read("other"));
  EXPECT_TRUE(Native().CopyFileA(file.c_str(), Path("third").c_str(), true));
  EXPECT_EQ("new", Read("third"));
}

TEST_F(Files, ACopyOntoItselfFailsAndHarmsNothing) {
  const std::string file = Make("file", "bytes");
  EXPECT_FALSE(Native().CopyFileA(file.c_str(), file.c_str(), false));
  EXPECT_EQ("bytes", Read("file"));
}

TEST_F(Files, DirectoriesAreNotCopied) {
  ASSERT_TRUE(Native().CreateDirectoryA(Path("from").c_str()));
  EXPECT_FALSE(Native().CopyFileA(Path("from").c_str(), Path("to").c_str(), false));
  EXPECT_FALSE(Native().CopyFileA(Make("file", "x").c_str(), Path("from").c_str(), false));
  EXPECT_EQ(2u, Count());
}

TEST_F(Files, TheTempPathIsADirectoryThatEndsWithASeparator) {
  char path[longestPath];
  const std::uint32_t length = Native().GetTempPathA(sizeof path, path);
  ASSERT_GT(length, 0u);
  ASSERT_LT(length, longestPath);
  EXPECT_EQ(length, std::string(path).size());
  EXPECT_TRUE(path[length - 1] == '/' || path[length - 1] == '\\');
  EXPECT_EQ(0, Native()._access(path, 0));
}

TEST_F(Files, ATempPathThatDoesNotFitTellsItsSize) {
  char path[longestPath], small[2] = "?";
  const std::uint32_t length = Native().GetTempPathA(sizeof path, path);
  EXPECT_EQ(length + 1, Native().GetTempPathA(1, small));
  EXPECT_EQ(length, Native().GetTempPathA(length + 1, path));
}

TEST_F(Files, ATempFileIsNewAndEmpty) {
  char first[longestPath], second[longestPath];
  const std::uint32_t number = Native().GetTempFileNameA(folder.c_str(), "receipt", 0, first);
  ASSERT_NE(0u, number);
  ASSERT_NE(0u, Native().GetTempFileNameA(folder.c_str(), "receipt", 0, second));
  EXPECT_STRNE(first, second);
  EXPECT_EQ(2u, Count());
  EXPECT_EQ(0u, fs::file_size(fs::path(first)));
  const std::string name = fs::path(first).filename().string();
  EXPECT_EQ("rec", name.substr(0, 3));
  char digits[8];
  std::snprintf(digits, sizeof digits, "%x", number);
  EXPECT_NE(std::string::npos, Small(name).find(digits));
  EXPECT_EQ(".tmp", Small(name).substr(name.size() - 4));
}

TEST_F(Files, AGivenNumberMakesANameAndNoFile) {
  char name[longestPath];
  EXPECT_EQ(0x1A2Bu, Native().GetTempFileNameA(folder.c_str(), "k", 0x1A2B, name));
  EXPECT_EQ("k1a2b.tmp", Small(fs::path(name).filename().string()));
  EXPECT_EQ(0u, Count());
}

TEST_F(Files, ATempFileNeedsADirectory) {
  char name[longestPath];
  EXPECT_EQ(0u, Native().GetTempFileNameA(Path("missing").c_str(), "k", 0, name));
  EXPECT_EQ(0u, Native().GetTempFileNameA(std::string(longestPath, 'a').c_str(), "k", 0, name));
}

}  // namespace
}  // namespace os
