// Copies of one text made, changed and dropped on several threads at once.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "core/field_set.h"
#include "core/string.h"
#include "support/storage_inspection.h"

namespace kest {
namespace {

using testing::ReferencesOf;
using testing::Sample;

constexpr int threadCount = 4;
constexpr int rounds = 5000;

template <typename Work>
void OnThreads(Work work) {
  std::vector<std::thread> threads;
  for (int i = 0; i < threadCount; ++i) threads.emplace_back(work);
  for (std::thread& thread : threads) thread.join();
}

TEST(StringThreads, CopiesMadeAndDroppedLeaveOneOwner) {
  const String source(Sample(60).c_str());
  std::atomic<int> wrong{0};
  OnThreads([&] {
    for (int i = 0; i < rounds; ++i) {
      const String first(source);
      String second;
      second = first;
      if (second.Length() != 60 || second.At(59) != source.At(59)) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_EQ(1u, ReferencesOf(source));
  EXPECT_EQ(Sample(60), testing::Content(source));
}

TEST(StringThreads, ChangedCopiesLeaveTheSourceAlone) {
  const String source("abc");
  std::atomic<int> wrong{0};
  OnThreads([&] {
    for (int i = 0; i < rounds; ++i) {
      String copy(source);
      copy.Append("def");
      if (copy.Compare("abcdef") != 0) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_STREQ("abc", source.Characters());
  EXPECT_EQ(1u, ReferencesOf(source));
}

// Whoever of the owners is the last writes in place; the others must have finished reading by then.
TEST(StringThreads, OwnersOfOneBlockMayAllWriteAtOnce) {
  std::atomic<int> wrong{0};
  for (int round = 0; round < rounds / 10; ++round) {
    String owners[threadCount];
    owners[0] = Sample(20).c_str();
    for (int i = 1; i < threadCount; ++i) owners[i] = owners[0];
    std::atomic<int> next{0};
    OnThreads([&] {
      String& own = owners[next++];
      own.SetAt(0, '#');
      own.Append('!');
      if (testing::Content(own) != "#" + Sample(20).substr(1) + "!") ++wrong;
    });
  }
  EXPECT_EQ(0, wrong);
}

TEST(StringThreads, FieldSetsThatShareTextsAreUsedAtOnce) {
  FieldSet source;
  for (int i = 0; i < 40; ++i) source.Add("name", "value");
  std::atomic<int> wrong{0};
  OnThreads([&] {
    for (int i = 0; i < rounds / 50; ++i) {
      FieldSet copy(source);
      copy.Set("name", "other");
      copy.Clear();
      if (copy.Fields().Count() != 0) ++wrong;
    }
  });
  EXPECT_EQ(0, wrong);
  EXPECT_STREQ("value", source.Get("name").Text());
}

}  // namespace
}  // namespace kest
