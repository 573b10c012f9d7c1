#include "sandbox/process.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <stdlib.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <stdexcept>

namespace sandboxtest {
namespace {

constexpr int patience = 60000;  // milliseconds

struct Pipe {
  Pipe() {
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe2 failed");
  }
  int ends[2];
};

}  // namespace

Process::Process(const std::vector<std::string>& arguments, const std::string& before) {
  const Pipe out;
  const Pipe err;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, out.ends[1], 1);
  posix_spawn_file_actions_adddup2(&actions, err.ends[1], 2);
  std::vector<std::string> line = {KEST_SANDBOX_PROGRAM};
  if (!before.empty()) line = {"/bin/sh", "-c", before + " && exec \"$0\" \"$@\"", KEST_SANDBOX_PROGRAM};
  line.insert(line.end(), arguments.begin(), arguments.end());
  const std::string program = line.front();
  std::vector<char*> words;
  for (std::string& word : line) words.push_back(word.data());
  words.push_back(nullptr);
  const int result = ::posix_spawn(&id, program.c_str(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  ::close(out.ends[1]);
  ::close(err.ends[1]);
  outputFile = out.ends[0];
  logFile = err.ends[0];
  if (result != 0) throw std::runtime_error("cannot start " + program);
  reader = std::thread([this] { KeepLog(); });
}

Process::~Process() {
  if (id > 0) {
    ::kill(id, SIGKILL);
    ::waitpid(id, nullptr, 0);
  }
  if (reader.joinable()) reader.join();
  ::close(outputFile);
  ::close(logFile);
}

bool Process::ReadMore() {
  pollfd waiting = {outputFile, POLLIN, 0};
  if (::poll(&waiting, 1, patience) <= 0) return false;
  char piece[4096];
  const ssize_t count = ::read(outputFile, piece, sizeof piece);
  if (count <= 0) return false;
  output.append(piece, static_cast<std::size_t>(count));
  return true;
}

void Process::KeepLog() {
  for (;;) {
    char piece[4096];
    const ssize_t count = ::read(logFile, piece, sizeof piece);
    if (count < 0 && errno == EINTR) continue;
    const std::lock_guard<std::mutex> lock(mutex);
    if (count > 0) log.append(piece, static_cast<std::size_t>(count));
    logEnded = count <= 0;
    logGrown.notify_all();
    if (logEnded) return;
  }
}

std::string Process::Log() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return log;
}

std::string Process::ReadLine() {
  for (;;) {
    const std::size_t end = output.find('\n', outputTaken);
    if (end != std::string::npos) {
      const std::string line = output.substr(outputTaken, end - outputTaken);
      outputTaken = end + 1;
      return line;
    }
    if (!ReadMore()) return "";
  }
}

bool Process::WaitForLog(const std::string& text, int times) {
  std::unique_lock<std::mutex> lock(mutex);
  const auto appeared = [&] {
    std::size_t from = 0;
    for (int i = 0; i < times; i++) {
      const std::size_t found = log.find(text, from);
      if (found == std::string::npos) return false;
      from = found + text.size();
    }
    return true;
  };
  logGrown.wait_for(lock, std::chrono::milliseconds(patience), [&] { return logEnded || appeared(); });
  return appeared();
}

std::size_t Process::Megabytes(const std::string& name) const {
  std::ifstream status("/proc/" + std::to_string(id) + "/status");
  for (std::string word; status >> word;) {
    std::size_t kilobytes = 0;
    if (word == name && status >> kilobytes) return kilobytes / 1024;
  }
  throw std::runtime_error("cannot read the memory of the process");
}

bool Process::HoldsInMemory(const std::string& text) const {
  constexpr std::size_t most = std::size_t{1} << 30;  // beyond it lies the shadow memory of a sanitizer
  const std::string folder = "/proc/" + std::to_string(id);
  std::ifstream maps(folder + "/maps");
  const int memory = ::open((folder + "/mem").c_str(), O_RDONLY | O_CLOEXEC);
  if (memory < 0) throw std::runtime_error("cannot read the memory of the process");
  bool found = false;
  for (std::string line; !found && std::getline(maps, line);) {
    unsigned long begin = 0, end = 0;
    char access[5] = "";
    if (std::sscanf(line.c_str(), "%lx-%lx %4s", &begin, &end, access) != 3) continue;
    if (access[0] != 'r' || access[1] != 'w' || end - begin > most) continue;
    std::string bytes(end - begin, '\0');
    const ssize_t count = ::pread(memory, bytes.data(), bytes.size(), static_cast<off_t>(begin));
    bytes.resize(count > 0 ? static_cast<std::size_t>(count) : 0);
    found = bytes.find(text) != std::string::npos;
  }
  ::close(memory);
  return found;
}

void Process::Signal(int number) {
  ::kill(id, number);
}

int Process::Wait() {
  // A process that does not end keeps its pipe open and is given up when that stays silent.
  while (ReadMore()) {
  }
  const int handle = static_cast<int>(::syscall(SYS_pidfd_open, id, 0));
  pollfd ending = {handle, POLLIN, 0};
  const bool ended = ::poll(&ending, 1, patience) > 0;
  ::close(handle);
  int status = 0;
  if (!ended || ::waitpid(id, &status, 0) != id) return -1;
  id = -1;
  reader.join();
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
}

TemporaryFolder::TemporaryFolder() {
  std::string pattern = (std::filesystem::temp_directory_path() / "kest-sandbox-test-XXXXXX").string();  // for mkdtemp
  if (!::mkdtemp(pattern.data())) throw std::runtime_error("mkdtemp failed");
  path = pattern;
}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(path, ignored);
}

}  // namespace sandboxtest
