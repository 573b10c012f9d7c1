// What the POSIX sockets do where Windows' differ: over loopback, with a listener of the test's own.
#include "os/posix/sockets.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netdb.h>
#include <netinet/in.h>
#include <poll.h>
#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <fstream>
#include <future>
#include <string>
#include <thread>
#include <vector>

// The resolver, which here knows one name with several addresses beside those of the machine: no machine promises one.
extern "C" int getaddrinfo(const char* name, const char* service, const addrinfo* hints, addrinfo** found) {
  static const auto resolve = reinterpret_cast<decltype(&getaddrinfo)>(dlsym(RTLD_NEXT, "getaddrinfo"));
  if (std::strcmp(name, "several.test") != 0) return resolve(name, service, hints, found);
  for (const char* address : {"10.0.0.3", "10.0.0.1", "10.0.0.2"}) {
    const int error = resolve(address, service, hints, found);
    if (error != 0) return error;
    found = &(*found)->ai_next;
  }
  return 0;
}

namespace os::posix {
namespace {

// A socket of the seam, connected to a plain one.
class Connected : public ::testing::Test {
 protected:
  Connected() {
    const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    EXPECT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), length));
    EXPECT_EQ(0, listen(listener, 1));
    EXPECT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length));
    own = Native().socket(addressFamilyInet, socketTypeStream, 0);
    const SocketAddress target{addressFamilyInet, address.sin_port, address.sin_addr.s_addr, {}};
    EXPECT_EQ(0, Native().connect(own, &target, sizeof target));
    peer = accept(listener, nullptr, nullptr);
    close(listener);
  }
  ~Connected() override {
    EXPECT_EQ(0, Native().closesocket(own));
    ClosePeer();
  }
  void ClosePeer() {
    if (peer >= 0) close(peer);
    peer = -1;
  }

  Socket own = invalidSocket;
  int peer = -1;
};

TEST_F(Connected, BytesGoBothWaysAndTheEndIsZero) {
  char bytes[8] = {};
  ASSERT_EQ(5, Native().send(own, "hello", 5, 0));
  ASSERT_EQ(5, ::recv(peer, bytes, 5, MSG_WAITALL));
  EXPECT_STREQ("hello", bytes);
  ASSERT_EQ(3, ::send(peer, "abc", 3, 0));
  EXPECT_EQ(3, Native().recv(own, bytes, sizeof bytes, 0));
  ClosePeer();
  EXPECT_EQ(0, Native().recv(own, bytes, sizeof bytes, 0));
}

TEST_F(Connected, SendingToAPeerThatIsGoneFailsWithoutASignal) {
  std::signal(SIGPIPE, SIG_DFL);  // which would end this process
  const linger reset{1, 0};
  setsockopt(peer, SOL_SOCKET, SO_LINGER, &reset, sizeof reset);
  ClosePeer();
  int result = 0;
  for (int i = 0; i < 100 && result >= 0; ++i) result = Send(own, "bytes", 5, 0);
  EXPECT_EQ(-1, result);
  EXPECT_EQ(-1, Send(own, "bytes", 5, 0));
}

TEST_F(Connected, LingerReachesTheKernelAsGiven) {
  for (const Linger wanted : {Linger{1, 7}, Linger{0, 0}}) {
    ASSERT_EQ(0, SetOption(own, socketLevel, optionLinger, &wanted, sizeof wanted));
    linger set{};
    socklen_t length = sizeof set;
    ASSERT_EQ(0, getsockopt(static_cast<int>(own), SOL_SOCKET, SO_LINGER, &set, &length));
    EXPECT_EQ(wanted.on, set.l_onoff);
    // Switched off, the kernel keeps the seconds that it had.
    if (wanted.on != 0) {
      EXPECT_EQ(wanted.seconds, set.l_linger);
    }
  }
}

TEST_F(Connected, OptionsThatNobodySetsAreRefused) {
  const Linger value{1, 7};
  EXPECT_EQ(-1, SetOption(own, socketLevel, optionLinger + 1, &value, sizeof value));
  EXPECT_EQ(-1, SetOption(own, socketLevel + 1, optionLinger, &value, sizeof value));
  EXPECT_EQ(-1, SetOption(own, socketLevel, optionLinger, &value, sizeof value - 1));
}

TEST_F(Connected, ProgramsThatAreStartedDoNotInheritIt) {
  EXPECT_NE(0, fcntl(static_cast<int>(own), F_GETFD) & FD_CLOEXEC);
}

std::atomic<int> interruptions{0};
void CountInterruption(int) { ++interruptions; }

bool Waits(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string state;
  std::getline(file, state);
  const std::size_t name = state.rfind(')');
  return name != std::string::npos && state.compare(name, 3, ") S") == 0;
}

// Interrupts the process's first thread `times` times, each time once it waits in a call.
void InterruptFirstThread(pthread_t thread, int times) {
  for (int i = 0; i < times; ++i) {
    while (!Waits(getpid())) poll(nullptr, 0, 1);
    pthread_kill(thread, SIGUSR1);
    while (interruptions <= i) poll(nullptr, 0, 1);
  }
}

class Interrupted : public Connected {
 protected:
  Interrupted() {
    struct sigaction action {};
    action.sa_handler = CountInterruption;  // and no SA_RESTART: the calls end with EINTR
    sigaction(SIGUSR1, &action, &before);
    interruptions = 0;
  }
  ~Interrupted() override { sigaction(SIGUSR1, &before, nullptr); }

  struct sigaction before {};
};

TEST_F(Interrupted, AReceiveGoesOn) {
  const pthread_t receiver = pthread_self();
  std::thread peerThread([&] {
    InterruptFirstThread(receiver, 20);
    EXPECT_EQ(1, ::send(peer, "x", 1, 0));
  });
  char byte = 0;
  EXPECT_EQ(1, Receive(own, &byte, 1, 0));
  peerThread.join();
  EXPECT_EQ('x', byte);
  EXPECT_GE(interruptions, 20);
}

TEST_F(Interrupted, ASendGoesOn) {
  // More than the buffers between the two hold, so that it waits until the peer reads.
  const std::vector<char> bytes(64u << 20);
  const pthread_t sender = pthread_self();
  std::thread peerThread([&] {
    InterruptFirstThread(sender, 20);
    std::vector<char> taken(1u << 20);
    for (std::size_t left = bytes.size(); left > 0;) {
      const ssize_t got = ::recv(peer, taken.data(), taken.size(), 0);
      if (got <= 0) break;
      left -= static_cast<std::size_t>(got);
    }
  });
  for (std::size_t sent = 0; sent < bytes.size();) {
    const int count = Send(own, bytes.data() + sent, static_cast<int>(bytes.size() - sent), 0);
    EXPECT_GT(count, 0);
    if (count <= 0) break;
    sent += static_cast<std::size_t>(count);
  }
  shutdown(static_cast<int>(own), SHUT_WR);
  peerThread.join();
  EXPECT_GE(interruptions, 20);
}

// Fills the listener's queue, so that whoever connects next waits until a connection is taken from it. Answers the
// sockets that fill it; the last of them waits already.
std::vector<int> FillQueue(const sockaddr_in& address) {
  std::vector<int> fillers;
  for (bool waits = false; !waits && fillers.size() < 64;) {
    fillers.push_back(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK, 0));
    ::connect(fillers.back(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    pollfd connecting{fillers.back(), POLLOUT, 0};
    waits = poll(&connecting, 1, 50) == 0;
  }
  return fillers;
}

// The kernel asks again after a second, which is how long this takes.
TEST_F(Interrupted, AConnectGoesOn) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const int listener = ::socket(AF_INET, SOCK_STREAM, 0);
  ASSERT_EQ(0, bind(listener, reinterpret_cast<sockaddr*>(&address), length));
  ASSERT_EQ(0, listen(listener, 0));
  ASSERT_EQ(0, getsockname(listener, reinterpret_cast<sockaddr*>(&address), &length));
  const std::vector<int> fillers = FillQueue(address);
  ASSERT_LT(fillers.size(), 64u);
  const Socket late = OpenSocket(addressFamilyInet, socketTypeStream, 0);
  const SocketAddress target{addressFamilyInet, address.sin_port, address.sin_addr.s_addr, {}};
  const pthread_t connector = pthread_self();
  std::thread listenerThread([&] {
    InterruptFirstThread(connector, 5);
    // Those that wait find room; a filler that is closed no longer asks for it.
    close(fillers.back());
    for (std::size_t i = 0; i + 1 < fillers.size(); ++i) close(accept(listener, nullptr, nullptr));
  });
  EXPECT_EQ(0, Connect(late, &target, sizeof target));
  listenerThread.join();
  EXPECT_GE(interruptions, 5);
  sockaddr_in peerAddress{};
  EXPECT_EQ(0, getpeername(static_cast<int>(late), reinterpret_cast<sockaddr*>(&peerAddress), &length));
  for (std::size_t i = 0; i + 1 < fillers.size(); ++i) close(fillers[i]);
  close(listener);
  close(static_cast<int>(late));
}

std::vector<std::uint32_t> AddressesOf(const HostEntry* entry) {
  std::vector<std::uint32_t> addresses;
  for (char** next = entry->addresses; *next != nullptr; ++next) {
    std::uint32_t address;
    std::memcpy(&address, *next, sizeof address);
    addresses.push_back(address);
  }
  return addresses;
}

TEST(LookUp, AllAddressesComeInTheResolversOrder) {
  const HostEntry* entry = LookUp("several.test");
  ASSERT_NE(nullptr, entry);
  EXPECT_EQ((std::vector<std::uint32_t>{htonl(0x0A000003), htonl(0x0A000001), htonl(0x0A000002)}), AddressesOf(entry));
}

TEST(LookUp, AddressesAreThoseOfTheMachinesResolver) {
  addrinfo hints{};
  hints.ai_family = AF_INET;
  hints.ai_socktype = SOCK_STREAM;
  addrinfo* found = nullptr;
  ASSERT_EQ(0, getaddrinfo("localhost", nullptr, &hints, &found));
  std::vector<std::uint32_t> expected;
  for (const addrinfo* info = found; info != nullptr; info = info->ai_next) {
    expected.push_back(reinterpret_cast<const sockaddr_in*>(info->ai_addr)->sin_addr.s_addr);
  }
  freeaddrinfo(found);
  const HostEntry* entry = LookUp("localhost");
  ASSERT_NE(nullptr, entry);
  EXPECT_EQ(expected, AddressesOf(entry));
}

TEST(LookUp, AnotherThreadsLookUpLeavesThisOnesEntryAlone) {
  const HostEntry* own = LookUp("127.0.0.1");
  ASSERT_NE(nullptr, own);
  std::thread([] {
    const HostEntry* other = LookUp("127.0.0.2");
    ASSERT_NE(nullptr, other);
    EXPECT_EQ(std::vector<std::uint32_t>{htonl(0x7F000002)}, AddressesOf(other));
  }).join();
  EXPECT_EQ(std::vector<std::uint32_t>{htonl(0x7F000001)}, AddressesOf(own));
}

TEST(LookUp, AnOlderEntryGoesWhileANewerStands) {
  ASSERT_NE(nullptr, LookUp("127.0.0.1"));
  std::promise<void> newest, done;
  std::thread other([&] {
    const HostEntry* entry = LookUp("127.0.0.2");
    newest.set_value();
    done.get_future().wait();
    ASSERT_NE(nullptr, entry);
    EXPECT_EQ(std::vector<std::uint32_t>{htonl(0x7F000002)}, AddressesOf(entry));
  });
  newest.get_future().wait();
  const HostEntry* own = LookUp("127.0.0.3");
  ASSERT_NE(nullptr, own);
  EXPECT_EQ(std::vector<std::uint32_t>{htonl(0x7F000003)}, AddressesOf(own));
  done.set_value();
  other.join();
}

TEST(LookUp, ManyThreadsLookUpAtOnce) {
  std::atomic<int> good{0};
  std::vector<std::thread> threads;
  for (std::uint32_t t = 1; t <= 8; ++t) {
    threads.emplace_back([t, &good] {
      const std::string name = "127.0.0." + std::to_string(t);
      for (int i = 0; i < 50; ++i) {
        const HostEntry* entry = LookUp(name.c_str());
        good += entry != nullptr && AddressesOf(entry) == std::vector<std::uint32_t>{htonl(0x7F000000 + t)} ? 1 : 0;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(400, good);
}

}  // namespace
}  // namespace os::posix
