// What users read on stderr: no line without the program's name, none that steers the terminal or shows a card.
#include "words.h"

#include <gtest/gtest.h>

#include <functional>
#include <iostream>
#include <sstream>

namespace kest_host {
namespace {

std::string Written(const std::function<void()>& say) {
  std::ostringstream written;
  std::streambuf* const before = std::cerr.rdbuf(written.rdbuf());
  say();
  std::cerr.rdbuf(before);
  return written.str();
}

TEST(Say, EveryLineBeginsWithTheName) {
  EXPECT_EQ("kest: one\nkest: two\n", Written([] { Say("one\ntwo"); }));
  EXPECT_EQ("kest: one\n", Written([] { Say("one\n"); }));
}

TEST(Say, ControlCharactersAreNotWritten) {
  EXPECT_EQ("kest: a?[2Jb\n", Written([] { Say("a\x1b[2Jb"); }));
}

TEST(Say, CardNumbersAreMasked) {
  EXPECT_EQ("kest: 41** **** **** 1111?\n", Written([] { Say("4111 1111 1111 1111?"); }));
}

TEST(SayWithNumbers, NumbersStay) {
  EXPECT_EQ("kest: transaction 123456789012345\n", Written([] { SayWithNumbers("transaction 123456789012345"); }));
}

}  // namespace
}  // namespace kest_host
