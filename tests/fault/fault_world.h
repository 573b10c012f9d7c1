// What stands behind the seam while operations are failed: a machine whose memory is counted, a commerce server and a
// registry in memory, and above them all the system that fails calls. There is one at a time.
#pragma once

#include "fault/machine.h"
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
  // Handles that are open between two calls of the host; empty when none is, as it should be.
  std::string OpenHandles() const;
  // What was not given back since BeginAnew; empty when all is.
  std::string Leak() const;
  // What the registry was told to make and to write since its calls were last cleared: "create all PATH" and
  // "set PATH : NAME", in order.
  std::vector<std::string> Writes() const;

  AllocationSystem memory;
  Machine machine{memory};
  SealedServer server{machine};
  MemoryRegistry registry{server};
  FaultSystem faults{registry};

 private:
  SystemInForce inForce{faults};
  std::int64_t blocksBefore = 0, locksBefore = 0;
};

}  // namespace kest::testing
