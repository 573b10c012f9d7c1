// The base of the tests that need a commerce server: an honest one stands behind the seam and is configured.
#pragma once

#include <gtest/gtest.h>

#include "support/allocation_system.h"
#include "support/sealed_server.h"
#include "transport/server_settings.h"

namespace kest::testing {

class CommerceTest : public ::testing::Test {
 protected:
  CommerceTest() : inForce(server) {
    SetServer("shop.example", 8080, SealedServer::KeyText().c_str());
    SetProxy("", 0);
  }
  ~CommerceTest() override {
    EXPECT_EQ(0u, server.OpenSockets());
    // What the settings hold goes back before the systems go.
    SetServer("", 0, "");
    SetProxy("", 0);
  }

  AllocationSystem memory;
  SealedServer server{memory};
  SystemInForce inForce;
};

}  // namespace kest::testing
