// The base of the tests with hostile peers: measured memory, peers, and a server whose replies are valid because it has
// the key of every call.
#pragma once

#include <gtest/gtest.h>
#include <kestapi.h>

#include <functional>

#include "shape/hostile_sockets.h"
#include "shape/measured_machine.h"
#include "shape/reply_rows.h"
#include "support/memory_registry.h"
#include "support/sealed_server.h"

namespace kest::testing {

class HostileTest : public ::testing::Test {
 protected:
  HostileTest() {
    KestSetServer("shop.example", 8080, SealedServer::KeyText().c_str());
    LearnKey(server);
    for (const Stream& stream : HonestStreams(server)) honest.push_back(stream[0]);
  }
  ~HostileTest() override {
    EXPECT_EQ(0u, sockets.OpenSockets());
    // What the settings hold goes back before the systems go.
    KestSetServer("", 0, "");
    KestSetProxy("", 0);
  }

  // Fetches the product list into a new one; its code, or 0 for a success. Everything must be given back.
  std::int32_t Fetch() {
    const std::size_t before = memory.Live();
    KestProductList* list = KestCreateProductList();
    memory.Restart();
    sockets.Restart();
    const bool isDone = KestGetProductList(list, "1.0") != 0;
    const std::int32_t code = KestGetErrorCode(KEST_FIELDS(list));
    EXPECT_TRUE(isDone || KestNextProduct(list) == nullptr);
    EXPECT_EQ(isDone, code == 0);
    KestDestroyProductList(list);
    EXPECT_EQ(before, memory.Live());
    EXPECT_EQ(0u, sockets.OpenSockets());
    return code;
  }

  // Runs it once with the handshake answered so, and once with the request.
  void ForEachMessage(const Peer& peer, const std::function<void()>& run) {
    for (const bool isHandshake : {true, false}) {
      SCOPED_TRACE(isHandshake ? "handshake" : "request");
      sockets.peers = isHandshake ? std::vector<Peer>{peer} : std::vector<Peer>{{honest[0]}, peer};
      run();
    }
  }

  MeasuredMachine memory;
  SealedServer server{memory};
  HostileSockets sockets{memory};
  MemoryRegistry registry{sockets};
  SystemInForce inForce{registry};
  std::vector<std::string> honest;  // the two replies
};

}  // namespace kest::testing
