// Runs the program as its user does. Every wait ends by itself after 60 seconds at most; a process still alive when its
// object goes is killed, by its id.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace sandboxtest {

class Process {
 public:
  /// Starts the sandbox program with these arguments; `before`, when it is not empty, are words of the shell that run
  /// first, such as "ulimit -n 60".
  explicit Process(const std::vector<std::string>& arguments, const std::string& before = "");
  ~Process();
  Process(const Process&) = delete;
  Process& operator=(const Process&) = delete;

  /// Returns the next line of stdout without its end; empty when none comes.
  std::string ReadLine();

  /// Waits until that text has appeared in stderr so many times; false when it does not.
  bool WaitForLog(const std::string& text, int times = 1);

  void Signal(int number);

  pid_t Id() const { return id; }

  /// Tells whether the text stands anywhere in the memory that the process can write.
  bool HoldsInMemory(const std::string& text) const;

  /// Returns the most memory that the process has had so far, in megabytes.
  std::size_t MostMegabytes() const { return Megabytes("VmHWM:"); }

  /// Returns what the system says of the process's memory under that name, in megabytes.
  std::size_t Megabytes(const std::string& name) const;

  /// Waits for the end; returns the exit code, 1000 plus the number of the signal that ended it, or -1 when it does not
  /// end. Afterwards Output and Log hold all that it wrote.
  int Wait();

  const std::string& Output() const { return output; }
  std::string Log() const;

 private:
  bool ReadMore();
  void KeepLog();

  pid_t id = -1;
  int outputFile = -1;
  int logFile = -1;
  std::string output;
  std::size_t outputTaken = 0;
  // Read as it is written: a program whose stderr nobody reads waits once the pipe is full.
  mutable std::mutex mutex;
  std::condition_variable logGrown;
  std::string log;
  bool logEnded = false;
  std::thread reader;
};

/// Makes an empty folder that is removed with everything in it.
class TemporaryFolder {
 public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;

  std::string operator/(const std::string& name) const { return path + "/" + name; }

 private:
  std::string path;
};

}  // namespace sandboxtest
