// A value that is about to be replaced by a process whose system calls are watched, and another beside it.
#pragma once

#include <gtest/gtest.h>
#include <sys/syscall.h>

#include <filesystem>
#include <string>
#include <vector>

#include "unit/os/registry_place.h"
#include "unit/os/traced_child.h"

namespace os {

inline const std::string oldData = "the old data", newData(10000, 'n'), otherData = "another value's data";

// The calls of which a change of the registry consists.
inline const std::vector<long> fileCalls = {SYS_openat,     SYS_read,  SYS_write,     SYS_fstat,
                                            SYS_newfstatat, SYS_fsync, SYS_renameat,  SYS_renameat2,
                                            SYS_mkdirat,    SYS_flock, SYS_getdents64};

class InterruptedWrite : public RegistryPlace {
 protected:
  InterruptedWrite() {
    EXPECT_EQ(errorSuccess, Set(key, "other", typeBinary, otherData));
    Prepare();
  }
  void Prepare() { EXPECT_EQ(errorSuccess, Set(key, "Value", typeString, oldData)); }
  int Replace() const { return Set(key, "value", typeBinary, newData); }

  bool IsOld() const { return Get(key, "value") == StoredValue{errorSuccess, typeString, oldData}; }
  bool IsNew() const { return Get(key, "value") == StoredValue{errorSuccess, typeBinary, newData}; }
  // What the names are when the second writer kept the first one's spelling.
  bool IsSpelledAsAtFirst() const { return ValueNames(key) == std::vector<std::string>{"other", "Value"}; }
  void ExpectTheRestIntact() const {
    EXPECT_EQ(2u, ValueNames(key).size());
    EXPECT_EQ((StoredValue{errorSuccess, typeBinary, otherData}), Get(key, "other"));
    EXPECT_EQ(std::vector<std::string>{}, KeyNames(key));
  }
  // Files of the store whose names no reader looks at.
  std::size_t Unfinished() const {
    std::size_t count = 0;
    for (const auto& file : std::filesystem::recursive_directory_iterator(store)) {
      count += file.path().filename().string().substr(0, 5) == ".new-";
    }
    return count;
  }
};

}  // namespace os
