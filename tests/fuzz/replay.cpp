// Replays a target's corpus once, so that every test run on every system holds what fuzzing found before.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>

#include "fuzz/target.h"

namespace kest::testing {
namespace {

std::string replayed;

std::set<std::filesystem::path> Corpus() {
  std::set<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::directory_iterator(KEST_CORPUS)) files.insert(entry.path());
  return files;
}

std::vector<std::uint8_t> BytesOf(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.is_open()) << path;
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

TEST(Corpus, EveryInputKeepsWhatTheTargetHolds) {
  const auto files = Corpus();
  ASSERT_FALSE(files.empty());
  for (const auto& path : files) {
    replayed = path.filename().string();
    SCOPED_TRACE(replayed);
    const std::vector<std::uint8_t> bytes = BytesOf(path);
    EXPECT_EQ(0, LLVMFuzzerTestOneInput(bytes.data(), bytes.size()));
  }
}

TEST(Corpus, AnEmptyInputKeepsWhatTheTargetHolds) {
  replayed = "the empty input";
  EXPECT_EQ(0, LLVMFuzzerTestOneInput(nullptr, 0));
}

}  // namespace

void Broken(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: Failure\n%s: does not hold: %s\n", file, line, replayed.c_str(), condition);
  std::abort();
}

}  // namespace kest::testing
