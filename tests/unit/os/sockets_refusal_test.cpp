// Connecting and receiving where the kernel refuses a call on the way.
#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>

#include "os/posix/sockets.h"
#include "unit/os/traced_child.h"

namespace os::posix {
namespace {

// An address of this machine at which nobody listens.
SocketAddress ClosedPort() {
  const int holder = ::socket(AF_INET, SOCK_STREAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  EXPECT_EQ(0, bind(holder, reinterpret_cast<sockaddr*>(&address), length));
  EXPECT_EQ(0, getsockname(holder, reinterpret_cast<sockaddr*>(&address), &length));
  close(holder);
  return {addressFamilyInet, address.sin_port, address.sin_addr.s_addr, {}};
}

// What connecting gives in a child whose `interrupted`-th connect call is interrupted.
TracedRun RunInterrupted(int interrupted, const std::function<int()>& work) {
  return RunTraced(work, {0, interrupted, EINTR, {SYS_connect}, ""});
}

TEST(InterruptedConnect, OfARefusedConnectionFails) {
  const SocketAddress target = ClosedPort();
  const TracedRun run = RunInterrupted(2, [&] {
    const Socket socket = OpenSocket(addressFamilyInet, socketTypeStream, 0);
    const int descriptor = static_cast<int>(socket);
    fcntl(descriptor, F_SETFL, O_NONBLOCK);
    // Asked for by the first call, refused by the time that the second one is interrupted.
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&target), sizeof target) == 0 || errno != EINPROGRESS) {
      return 2;
    }
    return Connect(socket, &target, sizeof target) == -1 ? 1 : 0;
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_connect, run.refused);
  EXPECT_EQ(1, run.result);
}

TEST(InterruptedConnect, ThatCannotBeWaitedForFails) {
  const SocketAddress target = ClosedPort();
  const TracedRun run = RunInterrupted(1, [&] {
    const Socket socket = OpenSocket(addressFamilyInet, socketTypeStream, 0);
    // Without the right to descriptors nothing is waited for.
    rlimit usual{};
    if (getrlimit(RLIMIT_NOFILE, &usual) != 0) return 2;
    const rlimit none{0, usual.rlim_max};
    if (setrlimit(RLIMIT_NOFILE, &none) != 0) return 2;
    const int result = Connect(socket, &target, sizeof target);
    setrlimit(RLIMIT_NOFILE, &usual);
    return result == -1 ? 1 : 0;
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_connect, run.refused);
  EXPECT_EQ(1, run.result);
}

TEST(InterruptedConnect, OfWhatIsNoSocketFails) {
  const SocketAddress target = ClosedPort();
  const TracedRun run = RunInterrupted(1, [&] {
    const int null = open("/dev/null", O_WRONLY | O_CLOEXEC);
    return Connect(static_cast<Socket>(null), &target, sizeof target) == -1 ? 1 : 0;
  });
  KEST_TRACED_OR_SKIP(run);
  EXPECT_EQ(SYS_connect, run.refused);
  EXPECT_EQ(1, run.result);
}

TEST(UnconnectedSocket, ReceivesNothing) {
  const Socket socket = OpenSocket(addressFamilyInet, socketTypeStream, 0);
  char byte = 'x';
  EXPECT_EQ(-1, Receive(socket, &byte, 1, 0));
  EXPECT_EQ('x', byte);
  close(static_cast<int>(socket));
}

TEST(OpenSocket, OtherTypesAreTakenAsTheyAre) {
  const Socket socket = OpenSocket(addressFamilyInet, SOCK_DGRAM, 0);
  int type = 0;
  socklen_t length = sizeof type;
  ASSERT_EQ(0, getsockopt(static_cast<int>(socket), SOL_SOCKET, SO_TYPE, &type, &length));
  EXPECT_EQ(SOCK_DGRAM, type);
  close(static_cast<int>(socket));
}

}  // namespace
}  // namespace os::posix
