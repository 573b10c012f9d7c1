// Which addresses does a host name stand for?
#include "transport/socket_address_list.h"

#include "core/exception.h"
#include "transport_fixture.h"

namespace kest::testing {
namespace {

using ResolveHostTest = TransportTest;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

std::vector<std::uint32_t> Addresses(const SocketAddressList& list) {
  std::vector<std::uint32_t> addresses;
  for (std::uint32_t i = 0; i < list.Count(); ++i) {
    EXPECT_EQ(list.At(i).value.family, os::addressFamilyInet);
    EXPECT_EQ(list.At(i).value.port, 0);
    addresses.push_back(list.At(i).value.address);
  }
  return addresses;
}

TEST_F(ResolveHostTest, AbsentNameHasNoAddressesAndIsNotLookedUp) {
  EXPECT_EQ(ResolveHost(nullptr).Count(), 0u);
  EXPECT_EQ(ResolveHost("").Count(), 0u);
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(ResolveHostTest, DottedAddressStandsForItself) {
  EXPECT_THAT(Addresses(ResolveHost("10.1.2.3")), ElementsAre(sockets.inet_addr("10.1.2.3")));
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(ResolveHostTest, NameThatBeginsWithADigitIsNeverLookedUp) {
  sockets.hosts["1host"] = {"10.0.0.1"};
  EXPECT_THAT(Addresses(ResolveHost("1host")), ElementsAre(0xFFFFFFFFu));
  EXPECT_THAT(sockets.lookUps, IsEmpty());
}

TEST_F(ResolveHostTest, NamesThatBeginWithNoDigitAreLookedUp) {
  for (const char* name : {"-host", "/host", ":host", "host"}) {
    sockets.hosts[name] = {"10.0.0.1"};
    EXPECT_THAT(Addresses(ResolveHost(name)), ElementsAre(sockets.inet_addr("10.0.0.1"))) << name;
  }
  EXPECT_THAT(sockets.lookUps, ElementsAre("-host", "/host", ":host", "host"));
}

TEST_F(ResolveHostTest, UnknownNameHasNoAddresses) {
  EXPECT_EQ(ResolveHost("nowhere").Count(), 0u);
  EXPECT_THAT(sockets.lookUps, ElementsAre("nowhere"));
}

TEST_F(ResolveHostTest, NameHasItsAddressesInTheResolversOrder) {
  sockets.hosts["server"] = {"10.0.0.3", "10.0.0.1", "10.0.0.2"};
  EXPECT_THAT(Addresses(ResolveHost("server")),
              ElementsAre(sockets.inet_addr("10.0.0.3"), sockets.inet_addr("10.0.0.1"), sockets.inet_addr("10.0.0.2")));
}

TEST_F(ResolveHostTest, CapacityIsWholeStepsOfThirtyTwo) {
  sockets.hosts["server"].assign(33, "10.0.0.1");
  EXPECT_EQ(ResolveHost("server").Capacity(), 64u);
  sockets.hosts["server"].assign(32, "10.0.0.1");
  EXPECT_EQ(ResolveHost("server").Capacity(), 32u);
}

TEST_F(ResolveHostTest, AtMost65535AddressesAreTaken) {
  sockets.hosts["crowd"].assign(65600, "10.0.0.1");
  sockets.hosts["crowd"][65534] = "10.0.0.2";
  const SocketAddressList list = ResolveHost("crowd");
  ASSERT_EQ(list.Count(), 65535u);
  EXPECT_EQ(list.At(65534).value.address, sockets.inet_addr("10.0.0.2"));
}

TEST_F(ResolveHostTest, ManyAddressesGetTheirRoomAtOnce) {
  sockets.hosts["crowd"].assign(10000, "10.0.0.1");
  sockets.Restart();
  EXPECT_EQ(ResolveHost("crowd").Count(), 10000u);
  EXPECT_EQ(sockets.Allocations(), 1u);
}

TEST_F(ResolveHostTest, NoMemoryRaisesAndLeavesNothingBehind) {
  sockets.hosts["server"] = {"10.0.0.1"};
  sockets.FailAt(1, AllocationSystem::Failing::fromThenOn);
  EXPECT_THROW(ResolveHost("server"), Qor::MemoryException);
  EXPECT_THROW(ResolveHost("10.0.0.1"), Qor::MemoryException);
  EXPECT_EQ(sockets.Outstanding(), 0);
}

}  // namespace
}  // namespace kest::testing
