// What stands behind the seam while operations are failed: memory that is counted, a commerce server and a registry in
// memory, and above them all the system that fails calls. There is one at a time.
#pragma once

#include "support/allocation_system.h"
#include "support/fault_system.h"
#include "support/memory_registry.h"
#include "support/sealed_server.h"

namespace kest::testing {

class FaultWorld {
 public:
  FaultWorld();
  ~FaultWorld();
  FaultWorld(const FaultWorld&) = delete;
  FaultWorld& operator=(const FaultWorld&) = delete;

  static FaultWorld& Current();

  // A registry without keys, a server that answers as from the start, settings that lead to it.
  void BeginAnew();
  // What was not given back since BeginAnew; empty when all is.
  std::string Leak();

  AllocationSystem memory;
  SealedServer server{memory};
  MemoryRegistry registry{server};
  FaultSystem faults{registry};

 private:
  SystemInForce inForce{faults};
  std::int64_t before = 0;
};

}  // namespace kest::testing
