#include "transport/server_settings.h"

#include <gtest/gtest.h>

#include "core/exception.h"
#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;

class ServerSettingsTest : public ::testing::Test {
 protected:
  ~ServerSettingsTest() override {
    SetServer("", 0, "");
    SetProxy("", 0);
  }
};

TEST_F(ServerSettingsTest, AGoodKeyIsLoaded) {
  EXPECT_TRUE(SetServer("shop.example", 8080, SealedServer::KeyText().c_str()));
  EXPECT_STREQ("shop.example", Settings().server.host.Text());
  EXPECT_STREQ("http", Settings().server.scheme.Text());
  EXPECT_EQ(8080, Settings().server.port);
}

TEST_F(ServerSettingsTest, ABadKeyKeepsHostAndPortAndLoadsNoKey) {
  ASSERT_TRUE(SetServer("first", 1, SealedServer::KeyText().c_str()));
  for (const char* key : {"", "not base64!", "QUJD", "MIGf"}) {
    EXPECT_FALSE(SetServer("second", 2, key)) << key;
    EXPECT_STREQ("second", Settings().server.host.Text());
    EXPECT_EQ(2, Settings().server.port);
    RsaPublicCipher copy;
    EXPECT_FALSE(copy.CopyKeyFrom(Settings().serverPublicKey)) << key;
  }
}

TEST_F(ServerSettingsTest, AKeyBrokenIntoLinesIsTaken) {
  std::string key = SealedServer::KeyText();
  for (std::size_t at = 64; at < key.size(); at += 66) key.insert(at, "\r\n");
  EXPECT_TRUE(SetServer("shop.example", 8080, (key + "\n").c_str()));
}

// A system whose socket library does not start.
class NoSockets : public testing::ForwardingSystem {
 public:
  int WSAStartup(std::uint16_t, os::SocketLibraryData*) override { return 10091; }
};

TEST_F(ServerSettingsTest, TheResultDependsOnTheKeyAlone) {
  NoSockets system;
  testing::SystemInForce inForce(system);
  EXPECT_TRUE(SetServer("shop.example", 8080, SealedServer::KeyText().c_str()));
}

// Counts what the socket library is asked for.
class SocketRecorder : public testing::ForwardingSystem {
 public:
  int WSAStartup(std::uint16_t version, os::SocketLibraryData* data) override {
    versions.push_back(version);
    return ForwardingSystem::WSAStartup(version, data);
  }
  std::vector<std::uint16_t> versions;
};

TEST_F(ServerSettingsTest, TheSocketLibraryIsStartedEachTime) {
  SocketRecorder system;
  testing::SystemInForce inForce(system);
  SetServer("shop.example", 8080, "no key");
  EXPECT_EQ((std::vector<std::uint16_t>{0x0101}), system.versions);
  SetServer("shop.example", 8080, SealedServer::KeyText().c_str());
  EXPECT_EQ((std::vector<std::uint16_t>{0x0101, 0x0101}), system.versions);
}

TEST_F(ServerSettingsTest, WithoutMemoryNoKeyIsLoaded) {
  const std::string host(60, 'h');  // longer than any block that is there
  const std::string key = SealedServer::KeyText();
  for (std::uint64_t point = 1;; ++point) {
    ASSERT_TRUE(SetServer("first", 1, key.c_str()));
    testing::AllocationSystem memory;
    bool isLoaded = true;
    {
      testing::SystemInForce inForce(memory);
      memory.FailAt(point, testing::AllocationSystem::Failing::fromThenOn);
      try {
        isLoaded = SetServer(host.c_str(), 2, key.c_str());
      } catch (const Qor::MemoryException&) {
        isLoaded = false;
      }
    }
    RsaPublicCipher copy;
    EXPECT_EQ(isLoaded, copy.CopyKeyFrom(Settings().serverPublicKey)) << point;
    if (isLoaded) break;
    ASSERT_LT(point, 50u);
  }
}

TEST_F(ServerSettingsTest, TheProxyIsStored) {
  SetProxy("proxy.example", 3128);
  EXPECT_STREQ("proxy.example", Settings().proxy.host.Text());
  EXPECT_EQ(3128, Settings().proxy.port);
  EXPECT_STREQ("http", Settings().proxy.scheme.Text());
}

}  // namespace
}  // namespace kest
