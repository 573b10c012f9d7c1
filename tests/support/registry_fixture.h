// The base of the tests on a registry in memory: whatever a test does, no handle stays open, none is used that is not,
// and no memory is left behind.
#pragma once

#include <gtest/gtest.h>

#include "support/allocation_system.h"
#include "support/memory_registry.h"

namespace kest::testing {

class RegistryTest : public ::testing::Test {
 protected:
  RegistryTest() : inForce(registry) {}
  // Here, where what a test's own members hold has been given back.
  ~RegistryTest() override {
    EXPECT_EQ(0u, registry.OpenHandles());
    EXPECT_EQ(expectedWrongHandles, registry.WrongHandles());
    EXPECT_EQ(0, memory.Outstanding());
  }

  AllocationSystem memory;
  MemoryRegistry registry{memory};
  int expectedWrongHandles = 0;

 private:
  SystemInForce inForce;
};

}  // namespace kest::testing
