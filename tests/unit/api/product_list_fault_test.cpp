// Every call to the system that one product list makes fails in turn, once and from then on.
#include <gtest/gtest.h>
#include <kestapi.h>

#include <set>

#include "support/commerce_fixture.h"
#include "support/fault_system.h"

namespace kest {
namespace {

using testing::FaultSystem;

class ProductListFaults : public testing::CommerceTest {
 protected:
  ProductListFaults() {
    KestSetApplicationGuid("guid-1");
    server.replyFields = {{"KEST-Product", "SKU:1^Name:Tool"}, {"KEST-Product", "SKU:2"}, {"Note", "n"}};
  }
  ~ProductListFaults() override { KestSetApplicationGuid(nullptr); }

  // Whether a failure of this call must fail the product list: entropy has other sources, and closing is closing.
  static bool IsFatal(const std::string& call) {
    static const std::set<std::string> fatal = {"GlobalAlloc", "socket", "connect", "send", "recv", "gethostbyname"};
    return fatal.count(call) != 0;
  }

  static int CountProducts(KestProductList* list) {
    int products = 0;
    while (KestNextProduct(list) != nullptr) ++products;
    return products;
  }

  // One call on a fresh list with the `point`-th call to the system failing, then the same call without the fault.
  void FailOneCall(FaultSystem& faults, std::uint64_t point, FaultSystem::Failing how) {
    const std::int64_t before = memory.Outstanding();
    KestProductList* list = KestCreateProductList();
    faults.FailAt(point, how);
    const bool isDone = KestGetProductList(list, "1") == 1;
    const std::string failed = faults.Calls().at(static_cast<std::size_t>(point) - 1);
    faults.FailNever();
    SCOPED_TRACE(std::to_string(point) + " " + failed);
    if (how == FaultSystem::Failing::once) {
      EXPECT_EQ(!IsFatal(failed), isDone);
    }
    const std::int32_t code = KestGetErrorCode(KEST_FIELDS(list));
    // Only memory that runs out beside the exchange leaves the code as it stands.
    EXPECT_TRUE(isDone ? code == 0 : code == 102 || (code == 0 && failed == "GlobalAlloc"));
    EXPECT_EQ(0u, server.OpenSockets());
    EXPECT_EQ(1, KestGetProductList(list, "1"));
    EXPECT_EQ(2, CountProducts(list));
    KestDestroyProductList(list);
    EXPECT_EQ(before, memory.Outstanding());
  }

  void FailEveryCall(FaultSystem::Failing how) {
    FaultSystem faults(server);
    testing::SystemInForce failing(faults);
    KestProductList* list = KestCreateProductList();
    faults.FailNever();
    ASSERT_EQ(1, KestGetProductList(list, "1"));
    const std::size_t points = faults.Calls().size();
    KestDestroyProductList(list);
    EXPECT_GT(points, 100u);
    for (std::uint64_t point = 1; point <= points; ++point) FailOneCall(faults, point, how);
    RecordProperty("points", static_cast<int>(points));
  }
};

TEST_F(ProductListFaults, ACallThatFailsOnceGivesTheStatedResultAndTheNextListComes) {
  FailEveryCall(FaultSystem::Failing::once);
}

TEST_F(ProductListFaults, CallsThatFailFromThenOnGiveTheStatedResultAndTheNextListComes) {
  FailEveryCall(FaultSystem::Failing::fromThenOn);
}

TEST_F(ProductListFaults, AConversationAsksTheSystemInThisOrder) {
  FaultSystem recorder(server);
  testing::SystemInForce recording(recorder);
  KestProductList* list = KestCreateProductList();
  recorder.FailNever();
  ASSERT_EQ(1, KestGetProductList(list, "1"));
  std::vector<std::string> sockets;
  for (const std::string& call : recorder.Calls()) {
    const bool isSocket = std::set<std::string>{"socket", "gethostbyname", "connect", "send", "recv", "setsockopt",
                                                "closesocket"}.count(call) != 0;
    if (isSocket) sockets.push_back(call);
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
