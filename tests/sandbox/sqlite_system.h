// What SQLite asks of the system, as a test wants it answered: for one scope its sleeps cost no time, and its opens and
// writes fail as a read-only file's and a full disk's do. One object at a time, and no other thread in SQLite.
#pragma once

#include <cstdint>
#include <functional>

namespace sandboxtest {

class SqliteSystem {
 public:
  SqliteSystem();
  ~SqliteSystem();
  SqliteSystem(const SqliteSystem&) = delete;
  SqliteSystem& operator=(const SqliteSystem&) = delete;

  /// Called instead of each sleep, with its microseconds.
  std::function<void(int)> onSleep = [](int) {};

  /// Lets no file be opened for writing.
  bool opensFail = false;

  /// Lets so many writes pass, and all that follow fail for want of space; below 0 all pass.
  int writesLeft = -1;
};

}  // namespace sandboxtest
