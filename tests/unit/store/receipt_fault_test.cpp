// Every call to the system that storing and finding a receipt makes fails in turn, once and from then on.
#include "store_fixture.h"
#include "support/fault_system.h"

namespace kest::testing {
namespace {

class ReceiptFaults : public StoreTest {
 protected:
  // Runs `operation` with each of its calls failing in turn. The only exception is that for exhausted memory, nothing
  // stays open or allocated.
  template <typename Operation>
  void FailEveryCall(FaultSystem::Failing how, Operation operation) {
    FaultSystem faults(date);
    SystemInForce failing(faults);
    faults.FailNever();
    operation();
    const std::size_t points = faults.Points().size();
    ASSERT_GT(points, 20u);
    for (std::uint64_t point = 1; point <= points; ++point) {
      const std::int64_t before = memory.Outstanding();
      bool isStopped = false;
      faults.FailAt(point, how);
      try {
        operation();
      } catch (const Qor::MemoryException&) {
        isStopped = true;
      }
      const std::string failed = faults.Points().at(static_cast<std::size_t>(point) - 1).call;
      faults.FailNever();
      SCOPED_TRACE(std::to_string(point) + " " + failed);
      if (how == FaultSystem::Failing::once) {
        EXPECT_EQ(failed == "GlobalAlloc", isStopped);
      }
      EXPECT_EQ(before, memory.Outstanding());
      EXPECT_EQ(0u, registry.OpenHandles());
    }
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
