// Which calls to the system one product list makes on its way to the server.
#include <gtest/gtest.h>
#include <kestapi.h>

#include <set>

#include "support/commerce_fixture.h"
#include "support/fault_system.h"

namespace kest {
namespace {

using testing::FaultSystem;
using ProductListConversation = testing::CommerceTest;

TEST_F(ProductListConversation, AConversationAsksTheSystemInThisOrder) {
  FaultSystem recorder(server);
  testing::SystemInForce recording(recorder);
  KestProductList* list = KestCreateProductList();
  recorder.FailNever();
  ASSERT_EQ(1, KestGetProductList(list, "1"));
  std::vector<std::string> sockets;
  for (const testing::FaultPoint& point : recorder.Points()) {
    const bool isSocket = std::set<std::string>{"socket", "gethostbyname", "connect", "send", "recv", "setsockopt",
                                                "closesocket"}.count(point.call) != 0;
    if (isSocket) sockets.push_back(point.call);
  }
  const std::vector<std::string> one = {"socket", "gethostbyname", "connect", "send", "send", "recv", "setsockopt",
                                        "closesocket"};
  std::vector<std::string> two = one;
  two.insert(two.end(), one.begin(), one.end());
  EXPECT_EQ(two, sockets);
  KestDestroyProductList(list);
}

}  // namespace
}  // namespace kest
