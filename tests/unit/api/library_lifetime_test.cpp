#include "api/library_lifetime.h"

#include <gtest/gtest.h>

#include "api/library_state.h"
#include "support/forwarding_system.h"

namespace kest {
namespace {

class SocketLibrary : public testing::ForwardingSystem {
 public:
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    ++startups;
    lastVersion = version;
    data->version = 0x0101;
    return result;
  }
  int WSACleanup() override {
    ++cleanups;
    return 0;
  }
  int result = 0;
  int startups = 0;
  int cleanups = 0;
  std::uint16_t lastVersion = 0;
};

class LibraryLifetime : public ::testing::Test {
 protected:
  LibraryLifetime() : inForce(sockets) {}
  ~LibraryLifetime() override { State().module = nullptr; }

  SocketLibrary sockets;
  testing::SystemInForce inForce;
};

TEST_F(LibraryLifetime, AttachingKeepsTheModuleAndStartsSockets) {
  int module = 0;
  AttachProcess(&module);
  EXPECT_EQ(&module, State().module);
  EXPECT_EQ(1, sockets.startups);
  EXPECT_EQ(0x0101, sockets.lastVersion);
}

TEST_F(LibraryLifetime, AttachingWithoutSocketsKeepsTheModuleToo) {
  int module = 0;
  sockets.result = 10091;
  AttachProcess(&module);
  EXPECT_EQ(&module, State().module);
}

TEST_F(LibraryLifetime, DetachingLeavesTheSocketLibraryStarted) {
  AttachProcess(nullptr);
  DetachProcess();
  EXPECT_EQ(0, sockets.cleanups);
}

}  // namespace
}  // namespace kest
