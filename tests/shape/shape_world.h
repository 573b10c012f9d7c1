// Whole calls through the exports, each with the same key and challenge, against prepared replies; what a host sees of
// each, in words. There is one world at a time.
#pragma once

#include <string>
#include <vector>

#include "shape/delivering_sockets.h"
#include "shape/still_machine.h"
#include "support/memory_registry.h"
#include "support/sealed_server.h"

namespace kest::testing {

// Which exported operation is called: ordinals 524, 515, 517.
enum class Call { list, sale, bill };

struct Outcome {
  // "102": the exchange failed; "7 KEST-Error=7": the server refused; "done NAME=VALUE... [NAME=VALUE...]... receipt":
  // the fields of the reply but for the sealing's own, the products, and the receipt if there is one. What is not as it
  // must be after every call stands behind it: an object that is not whole, something that was not given back.
  std::string seen;
  std::vector<std::string> attempts;  // see DeliveringSockets
  std::vector<std::string> sent;

  bool operator==(const Outcome& other) const {
    return seen == other.seen && attempts == other.attempts && sent == other.sent;
  }
};

// Makes one honest call, so that the server knows the key and the challenge of every call on a still machine.
void LearnKey(SealedServer& server);

class ShapeWorld {
 public:
  ShapeWorld();
  ~ShapeWorld();
  ShapeWorld(const ShapeWorld&) = delete;
  ShapeWorld& operator=(const ShapeWorld&) = delete;

  // Holds the key and the challenge of every call here, to make replies with.
  SealedServer& Server() { return server; }

  // Makes an object, calls, looks and destroys it.
  Outcome Run(Call call, const std::vector<Stream>& streams, const std::vector<Delivery>& ways);
  // The same on a product list that holds the three products of an honest reply; "kept" stands in front of what is
  // seen when it still does.
  Outcome RunOnLoadedList(const std::vector<Stream>& honest, const std::vector<Stream>& streams);
  std::size_t BytesDelivered() const { return sockets.BytesDelivered(); }

 private:
  std::string CallFor(Call call);
  std::string List();
  std::string Sale();
  std::string Bill();
  std::string Leak() const;

  StillMachine memory;
  SealedServer server{memory};
  DeliveringSockets sockets{memory};
  MemoryRegistry registry{sockets};
  SystemInForce inForce{registry};
  std::int64_t before = 0;
};

}  // namespace kest::testing
