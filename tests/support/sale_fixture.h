// The base of the tests that sell: a commerce server and a registry in memory stand behind the seam.
#pragma once

#include <algorithm>

#include "api/checkout.h"
#include "api/commerce_call.h"
#include "core/exception.h"
#include "support/commerce_fixture.h"
#include "support/memory_registry.h"

namespace kest::testing {

class SaleTest : public CommerceTest {
 protected:
  SaleTest() : registryInForce(registry) {}
  ~SaleTest() override {
    EXPECT_EQ(0u, registry.OpenHandles());
    EXPECT_EQ(0, registry.WrongHandles());
  }

  // How many values were written, or were to be.
  std::size_t Writes() const {
    const auto isWrite = [](const std::string& call) { return call.rfind("set ", 0) == 0; };
    return static_cast<std::size_t>(std::count_if(registry.calls.begin(), registry.calls.end(), isWrite));
  }
  // Lets no key be made.
  void RefuseToMakeKeys() {
    registry.before = [this](const std::string& call) {
      if (call.rfind("create ", 0) == 0) registry.refusals[call] = os::errorAccessDenied;
    };
  }

  // Lets every sale find the day's first sequence number free, so that many sales leave one receipt.
  void KeepOneReceipt() {
    registry.before = [this](const std::string& call) {
      const bool isFirst = call.size() > 2 && call.compare(call.size() - 2, 2, "\\1") == 0;
      if (isFirst && call.rfind("open read ", 0) == 0) registry.refusals[call] = os::errorFileNotFound;
      registry.calls.clear();
    };
  }

  // Runs `operation`, which the server refuses with its code 12, with the memory ending at every allocation in turn: once
  // the reply is loaded, the code must tell.
  template <typename ReplyOf>
  void ExpectNoMemoryHidesCode12(bool (*operation)(CommerceCall&, Checkout&), ReplyOf replyOf) {
    std::uint64_t refused = 0;
    for (std::uint64_t point = 1;; ++point) {
      Checkout checkout;
      CommerceCall call;
      memory.FailAt(point, AllocationSystem::Failing::fromThenOn);
      try {
        EXPECT_FALSE(operation(call, checkout));
      } catch (const Qor::MemoryException&) {
      }
      const bool isOver = memory.Allocations() < point;
      memory.FailNever();
      const bool isAnswered = replyOf(checkout).Fields().Count() != 0;
      EXPECT_EQ(isAnswered, checkout.ErrorCode() == 12) << point;
      if (isOver) break;
      refused += isAnswered ? 1 : 0;
    }
    EXPECT_GT(refused, 0u);
  }

  MemoryRegistry registry{server};

 private:
  SystemInForce registryInForce;
};

}  // namespace kest::testing
