#include "unit/os/traced_child.h"

#include <sys/ptrace.h>
#include <sys/syscall.h>
#include <sys/user.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstddef>
#include <cstring>

// Of builds that measure which lines run.
extern "C" void __gcov_dump() __attribute__((weak));
extern "C" int __llvm_profile_write_file() __attribute__((weak));

namespace os {
namespace {

// The call with which `work` begins and ends; it makes none like it.
constexpr long boundary = SYS_getppid;

// Without the handlers of the parent: a leak checker, for one, does not work in a process that is traced.
[[noreturn]] void Leave(int result) {
  if (__gcov_dump != nullptr) __gcov_dump();
  if (__llvm_profile_write_file != nullptr) __llvm_profile_write_file();
  _exit(result);
}

std::string FileOf(pid_t child, std::uint64_t descriptor) {
  char path[4096];
  const std::string link = "/proc/" + std::to_string(child) + "/fd/" + std::to_string(static_cast<int>(descriptor));
  const ssize_t length = readlink(link.c_str(), path, sizeof path);
  return length > 0 ? std::string(path, static_cast<std::size_t>(length)) : "";
}

#ifdef __x86_64__
void Poke(pid_t child, std::size_t place, long value) {
  ptrace(PTRACE_POKEUSER, child, place, value);
}
void SkipCall(pid_t child) {
  Poke(child, offsetof(user, regs.orig_rax), -1);
}
void SetAnswer(pid_t child, long answer) {
  Poke(child, offsetof(user, regs.rax), answer);
}
constexpr bool canFailCalls = true;
#else
void SkipCall(pid_t) {}
void SetAnswer(pid_t, long) {}
constexpr bool canFailCalls = false;
#endif

class Tracer {
 public:
  Tracer(pid_t traced, const Meddling& what) : child(traced), meddling(what) {}

  // Goes from stop to stop until the child has ended.
  TracedRun Watch() {
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return Refused("the child may not be traced");
    ptrace(PTRACE_SETOPTIONS, child, 0, PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL);
    int signal = 0;
    for (;;) {
      ptrace(PTRACE_SYSCALL, child, 0, signal);
      if (waitpid(child, &status, 0) != child) return Refused("the child cannot be waited for");
      if (WIFEXITED(status)) run.result = WEXITSTATUS(status);
      run.wasKilled = WIFSIGNALED(status);
      if (!WIFSTOPPED(status)) return run;
      const bool isCall = WSTOPSIG(status) == (SIGTRAP | 0x80);
      signal = isCall ? 0 : WSTOPSIG(status);
      if (isCall && !AtStop()) return Refused("the kernel does not tell of system calls");
    }
  }

 private:
  bool AtStop() {
    __ptrace_syscall_info call{};
    if (ptrace(PTRACE_GET_SYSCALL_INFO, child, sizeof call, &call) <= 0) return false;
    if (call.op == PTRACE_SYSCALL_INFO_ENTRY && static_cast<long>(call.entry.nr) == boundary) {
      isInWork = !isInWork;
    } else if (isInWork) {
      if (call.op == PTRACE_SYSCALL_INFO_ENTRY) AtEntry(call);
      if (call.op == PTRACE_SYSCALL_INFO_EXIT && isSkipped) SetAnswer(child, -meddling.error);
      if (call.op == PTRACE_SYSCALL_INFO_EXIT) isSkipped = false;
      if (++stops == meddling.killAtStop) kill(child, SIGKILL);
    }
    return true;
  }

  void AtEntry(const __ptrace_syscall_info& call) {
    TracedCall seen{static_cast<long>(call.entry.nr), {}, FileOf(child, call.entry.args[0])};
    std::copy_n(call.entry.args, 6, seen.arguments);
    run.calls.push_back(seen);
    if (meddling.before) meddling.before(seen);
    const auto& list = meddling.fallible;
    if (std::find(list.begin(), list.end(), seen.number) == list.end()) return;
    if (seen.file.substr(0, meddling.place.size()) != meddling.place) return;
    if (++fallible != meddling.failCall && !(meddling.isLasting && fallible > meddling.failCall)) return;
    SkipCall(child);
    isSkipped = true;
    run.refused = seen.number;
  }

  TracedRun Refused(const char* why) {
    run.refusal = why;
    kill(child, SIGKILL);
    waitpid(child, nullptr, 0);
    return run;
  }

  const pid_t child;
  const Meddling& meddling;
  TracedRun run;
  bool isInWork = false, isSkipped = false;
  int stops = 0, fallible = 0;
};

}  // namespace

TracedRun RunTraced(const std::function<int()>& work, const Meddling& meddling) {
  TracedRun refused;
  if (meddling.failCall != 0 && !canFailCalls) {
    refused.refusal = "calls can be made to fail on x86-64 alone";
    return refused;
  }
  const pid_t child = fork();
  if (child < 0) {
    refused.refusal = std::strerror(errno);
    return refused;
  }
  if (child > 0) return Tracer(child, meddling).Watch();
  if (ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) _exit(255);
  raise(SIGSTOP);
  syscall(boundary);
  const int result = work();
  syscall(boundary);
  Leave(result);
}

int Start(const std::function<int()>& work) {
  const pid_t child = fork();
  if (child == 0) Leave(work());
  return child;
}

int WaitFor(int process) {
  int status = 0;
  return waitpid(process, &status, 0) == process && WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace os
