// One thing that a host does through the exports, so that every call to the system which it makes can be failed in turn.
// An operation owns the objects that a host would hold; each is made anew for each failure.
#pragma once

#include <kestapi.h>

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace kest::testing {

class Operation {
 public:
  virtual ~Operation() = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // Does it; answers whether it succeeded.
  virtual bool Run() = 0;
  // After a Run that answered `isDone`: what is wrong with the objects, the codes or what lies in the registry; empty
  // when all is as it should be. `isMemory` tells that a failed allocation was what failed.
  virtual std::string Fault(bool isDone, bool isMemory) = 0;
  // Whether it must succeed although this one call failed in this way; nothing where either may be.
  virtual std::optional<bool> Outcome(const std::string& call, int way) const {
    static_cast<void>(call), static_cast<void>(way);
    return std::nullopt;
  }

 protected:
  Operation() = default;
};

struct OperationCase {
  const char* name;
  std::function<std::unique_ptr<Operation>()> make;

  friend std::ostream& operator<<(std::ostream& out, const OperationCase& row) { return out << row.name; }
};

// Everything that the library offers to a host.
const std::vector<OperationCase>& AllOperations();

}  // namespace kest::testing
