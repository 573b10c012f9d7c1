// The faults that wait to be applied, in the order in which they were asked for. One thread at a time may use a table.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fault.h"

namespace sandbox {

/// The faults of one message: any number of delays, and at most one other, which comes last.
struct FaultPlan {
  std::vector<Fault> faults;

  /// Returns the sum of the delays.
  std::chrono::milliseconds Delay() const;

  /// Returns the one that is no delay; null when there is none. The plan owns it.
  const Fault* Main() const;

  /// Returns the names of the kinds, in their order.
  std::vector<std::string> Kinds() const;
};

class FaultTable {
 public:
  /// Takes further faults, behind those that wait already. Throws FaultError and takes none when more would wait than
  /// may.
  void Append(std::vector<Fault> further);

  /// Forgets all faults.
  void Clear() { waiting.clear(); }

  /// Forgets the faults of one kind.
  void Clear(FaultKind kind);

  /// Finds what applies to a message of that place and service: the delays up to the first other fault, and that one.
  FaultPlan Find(FaultPlace at, std::string_view service) const;

  /// Counts the faults of a plan as applied once; one that has none left is forgotten.
  void Spend(const FaultPlan& plan);

  const std::vector<Fault>& Waiting() const { return waiting; }

 private:
  std::vector<Fault> waiting;
  std::uint64_t lastId = 0;
};

}  // namespace sandbox
