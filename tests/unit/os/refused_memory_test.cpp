// What the system's calls do when the C library refuses them a block, or the thread's place for one. This program is
// linked so that the library's calls of malloc, pthread_setspecific and realpath come by here.
#include <gtest/gtest.h>
#include <pthread.h>

#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <thread>
#include <vector>

#include "unit/os/registry_place.h"

namespace {

// Counts down with each of the thread's calls; the one that reaches 0 is refused.
thread_local int untilRefusal = 0;

bool IsRefused() {
  return untilRefusal > 0 && --untilRefusal == 0;
}

}  // namespace

extern "C" {

void* __real_malloc(std::size_t bytes);
int __real_pthread_setspecific(pthread_key_t key, const void* value);
char* __real_realpath(const char* path, char* resolved);

void* __wrap_malloc(std::size_t bytes) {
  return IsRefused() ? nullptr : __real_malloc(bytes);
}
int __wrap_pthread_setspecific(pthread_key_t key, const void* value) {
  // To forget a block takes no room.
  return value != nullptr && IsRefused() ? ENOMEM : __real_pthread_setspecific(key, value);
}
char* __wrap_realpath(const char* path, char* resolved) {
  return IsRefused() ? nullptr : __real_realpath(path, resolved);
}
}

namespace os {
namespace {

namespace fs = std::filesystem;

std::ptrdiff_t OpenFiles() {
  return std::distance(fs::directory_iterator("/proc/self/fd"), fs::directory_iterator());
}

// Runs `work` with each of its calls refused in turn, and answers how many there were. `work` tells whether it ended as
// it must when one is refused.
int RefuseEach(const std::function<bool()>& work) {
  const std::ptrdiff_t before = OpenFiles();
  for (int call = 1;; ++call) {
    untilRefusal = call;
    const bool isFailure = work();
    const bool isReached = untilRefusal == 0;
    untilRefusal = 0;
    if (!isReached) return call - 1;
    EXPECT_TRUE(isFailure) << "call " << call;
    EXPECT_EQ(before, OpenFiles()) << "call " << call;
  }
}

class RefusedMemory : public RegistryPlace {};

class RefusedPath : public RegistryPlace {};

TEST_F(RefusedMemory, OfABlockIsNull) {
  untilRefusal = 1;
  EXPECT_EQ(nullptr, Native().GlobalAlloc(0, 8));
}

TEST_F(RefusedMemory, OfAKeyOpensNone) {
  const int calls = RefuseEach([this] {
    RegistryHandle opened = nullptr;
    const std::int32_t error = Native().RegOpenKeyExA(CurrentUser(), path.c_str(), 0, keyRead, &opened);
    if (opened != nullptr) Native().RegCloseKey(opened);
    return error == errorNotEnoughMemory && opened == nullptr;
  });
  EXPECT_EQ(1, calls);
}

TEST_F(RefusedMemory, OfANameListsNothing) {
  OpenedKey first, second;
  ASSERT_EQ(errorSuccess, first.Create(key, "First"));
  ASSERT_EQ(errorSuccess, second.Create(key, "second"));
  const int calls = RefuseEach([this] {
    std::vector<char> name(300);
    auto room = static_cast<std::uint32_t>(name.size());
    return Native().RegEnumKeyExA(key, 0, name.data(), &room) == errorNotEnoughMemory;
  });
  // How the first is spelled, the name of each, and their order.
  EXPECT_EQ(4, calls);
  EXPECT_EQ((std::vector<std::string>{"First", "second"}), KeyNames(key));
}

TEST_F(RefusedMemory, OfAValueReadsNone) {
  ASSERT_EQ(errorSuccess, Set(key, "Value", typeString, "data"));
  const int calls = RefuseEach([this] {
    std::uint32_t size = 0;
    return Native().RegQueryValueExA(key, "Value", nullptr, nullptr, &size) == errorNotEnoughMemory;
  });
  EXPECT_EQ(1, calls);
  EXPECT_EQ((StoredValue{errorSuccess, typeString, "data"}), Get(key, "Value"));
}

TEST_F(RefusedMemory, OfAValueListsAndReplacesNone) {
  ASSERT_EQ(errorSuccess, Set(key, "Value", typeString, "data"));
  // The value, its name and the order; the old value, whose spelling stays.
  EXPECT_EQ(3, RefuseEach([this] {
    char name[16];
    std::uint32_t room = sizeof name;
    return Native().RegEnumValueA(key, 0, name, &room) == errorNotEnoughMemory;
  }));
  EXPECT_EQ(1, RefuseEach([this] { return Set(key, "value", typeBinary, "new") == errorNotEnoughMemory; }));
  EXPECT_EQ((StoredValue{errorSuccess, typeBinary, "new"}), Get(key, "Value")) << "the last write was refused nothing";
  EXPECT_EQ(std::vector<std::string>{"Value"}, ValueNames(key));
}

// A thread of its own has no block from an earlier look-up.
TEST_F(RefusedMemory, OfAHostFindsNone) {
  int calls = 0;
  bool isFoundThen = false;
  std::thread([&] {
    calls = RefuseEach([] { return Native().gethostbyname("127.0.0.1") == nullptr; });
    isFoundThen = Native().gethostbyname("127.0.0.1") != nullptr;
  }).join();
  EXPECT_EQ(2, calls);  // the block, and the thread's place for it
  EXPECT_TRUE(isFoundThen);
}

TEST_F(RefusedPath, OfADestinationThatGoesMeanwhileCopiesNothing) {
  const std::string from = store + "/from", to = store + "/to";
  std::ofstream(from) << "new";
  std::ofstream(to) << "old";
  EXPECT_EQ(1, RefuseEach([&] { return !Native().CopyFileA(from.c_str(), to.c_str(), false); }));
  std::string copied;
  std::getline(std::ifstream(to), copied);
  EXPECT_EQ("new", copied) << "the last copy was refused nothing";
}

}  // namespace
}  // namespace os
