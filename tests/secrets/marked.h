// Memory that memcheck holds for undefined stands for secrets: memcheck counts an error for every branch on what follows
// from it and for every address that does. Results are declared defined before a test looks at them.
#pragma once

#include <gtest/gtest.h>
#include <valgrind/memcheck.h>

#include <cstddef>
#include <vector>

namespace kest::testing {

template <typename Memory>
void Mark(Memory* memory, std::size_t bytes) {
  // The macro's result says whether the mark was set.
  ASSERT_EQ(1u, VALGRIND_MAKE_MEM_UNDEFINED(memory, bytes) & 1u) << "this program is run by valgrind's memcheck";
}

template <typename Memory>
void Publish(Memory* memory, std::size_t bytes) {
  (void)VALGRIND_MAKE_MEM_DEFINED(memory, bytes);
}

// How many of the bytes follow from what was marked. A test that finds none has marked something else.
template <typename Memory>
std::size_t MarkedBytes(Memory* memory, std::size_t bytes) {
  std::vector<unsigned char> bits(bytes);
  EXPECT_EQ(1u, VALGRIND_GET_VBITS(memory, bits.data(), bytes)) << "this program is run by valgrind's memcheck";
  std::size_t marked = 0;
  for (const unsigned char byte : bits) marked += byte != 0 ? 1 : 0;
  return marked;
}

class MarkedTest : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_NE(0u, RUNNING_ON_VALGRIND) << "this program is run by valgrind's memcheck"; }
  // Each test's own errors.
  static unsigned Errors() { return static_cast<unsigned>(VALGRIND_COUNT_ERRORS); }
  unsigned before = Errors();
};

}  // namespace kest::testing
