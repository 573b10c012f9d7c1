// The base of the tests that sell: a commerce server and a registry in memory stand behind the seam.
#pragma once

#include <algorithm>

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

  MemoryRegistry registry{server};

 private:
  SystemInForce registryInForce;
};

}  // namespace kest::testing
