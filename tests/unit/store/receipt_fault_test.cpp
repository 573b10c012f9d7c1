// Every call to the system that storing and finding a receipt makes fails in turn, once and from then on.
#include "store_fixture.h"
#include "support/fault_system.h"

namespace kest::testing {
namespace {

class ReceiptFaults : public StoreTest {
 protected:
  // Runs `operation` with each of its calls failing in turn, in each way in which it can.
  template <typename Operation>
  void FailEveryCall(FaultSystem::Failing how, Operation operation) {
    FaultSystem faults(date);
    SystemInForce failing(faults);
    faults.FailNever();
    operation();
    const std::vector<FaultPoint> points = faults.Points();
    ASSERT_GT(points.size(), 20u);
    for (std::size_t i = 0; i < points.size(); ++i) {
      for (int way = 0; way < points[i].ways; ++way) {
        faults.FailAt(i + 1, how, way);
        FailOne(faults, how, operation);
      }
    }
  }
  // The only exception is that for exhausted memory, nothing stays open or allocated.
  template <typename Operation>
  void FailOne(FaultSystem& faults, FaultSystem::Failing how, Operation operation) {
    const std::int64_t before = memory.Outstanding();
    bool isStopped = false;
    try {
      operation();
    } catch (const Qor::MemoryException&) {
      isStopped = true;
    }
    if (how == FaultSystem::Failing::once) {
      EXPECT_EQ(isStopped, faults.FailedCall() == "GlobalAlloc") << faults.FailedCall();
    }
    EXPECT_EQ(before, memory.Outstanding()) << faults.FailedCall();
    EXPECT_EQ(0u, registry.OpenHandles()) << faults.FailedCall();
    faults.FailNever();
  }
  // The store sees a day without receipts every time.
  void StoreOnANewDay() {
    ++date.now.year;
    Store();
  }
  // Finds into a record of its own.
  void Find() {
    FieldSet found;
    const bool isFound = FindReceipt(guid, found);
    EXPECT_EQ(isFound ? 7u : 0u, found.Fields().Count());
  }
};

TEST_F(ReceiptFaults, ACallFailsOnceWhileStoringThenNothingIsLeftBehind) {
  FailEveryCall(FaultSystem::Failing::once, [&] { StoreOnANewDay(); });
}

TEST_F(ReceiptFaults, CallsFailFromThenOnWhileStoringThenNothingIsLeftBehind) {
  FailEveryCall(FaultSystem::Failing::fromThenOn, [&] { StoreOnANewDay(); });
}

TEST_F(ReceiptFaults, ACallFailsOnceWhileFindingThenNothingIsLeftBehind) {
  StoreFor("other");
  Store();
  FailEveryCall(FaultSystem::Failing::once, [&] { Find(); });
}

TEST_F(ReceiptFaults, CallsFailFromThenOnWhileFindingThenNothingIsLeftBehind) {
  StoreFor("other");
  Store();
  FailEveryCall(FaultSystem::Failing::fromThenOn, [&] { Find(); });
}

TEST_F(ReceiptFaults, AfterEveryFaultThenTheNextReceiptIsStoredAndFoundWhole) {
  for (std::uint64_t point = 1; point <= 40; ++point) {
    FaultSystem faults(date);
    SystemInForce failing(faults);
    faults.FailAt(point, FaultSystem::Failing::once);
    try {
      Store();
    } catch (const Qor::MemoryException&) {
    }
    faults.FailNever();
    purchase.Set("KEST-TxN", String(("TX-" + std::to_string(point)).c_str()));
    const String later(("later " + std::to_string(point)).c_str());
    StoreReceipt({later, products, purchase, cardNumber});
    FieldSet found;
    ASSERT_TRUE(FindReceipt(later, found)) << point;
    EXPECT_EQ("TX-" + std::to_string(point), Content(found.Get("KEST-Receipt-TxN")));
    EXPECT_EQ("19.95", Content(found.Get("KEST-Receipt-Price")));
  }
}

}  // namespace
}  // namespace kest::testing
