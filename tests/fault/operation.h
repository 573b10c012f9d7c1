// One thing that a host does through the exports, so that every call to the system which it makes can be failed in
// turn. An operation owns the objects that a host would hold; each is made anew for each failure.
#pragma once

#include <kestapi.h>

#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "support/fault_system.h"

namespace kest::testing {

// What failed while an operation ran.
struct Failure {
  FaultPoint point;
  int way = 0;
  int earlier = 0;            // calls of its name before it
  bool isFromThenOn = false;  // and whatever came after it
  bool isAlike = false;       // and all later calls of its name, in the same way

  bool IsNothing() const { return point.call.empty(); }
  // Whether memory was refused: that of this point, or that of whatever came after it.
  bool IsMemory() const { return isFromThenOn || point.call == "GlobalAlloc"; }
  // Whether there was none to the end.
  bool IsMemoryGone() const { return isFromThenOn || (isAlike && IsMemory()); }
};

// How an operation ends, as far as its result and its error code tell.
constexpr char done[] = "done";
constexpr char failed[] = "failed";  // of operations without an error code
constexpr char unchanged[] = "failed, the code is that of before";
constexpr char exchange[] = "failed, the code tells of the exchange";

class Operation {
 public:
  virtual ~Operation() = default;
  Operation(const Operation&) = delete;
  Operation& operator=(const Operation&) = delete;

  // Does it; answers whether it succeeded.
  virtual bool Run() = 0;
  // How the Run that answered `isDone` ended: one of the texts above, or what else there is to say.
  virtual std::string Ending(bool isDone) const { return isDone ? done : failed; }
  // How it must end when this one call fails, or it and its like do, which is not for memory.
  virtual std::string EndingAfter(const Failure& failure) const = 0;
  // After such a Run: what is wrong with the host's objects or with what lies in the registry; empty when all is as it
  // should be.
  virtual std::string Fault(bool isDone, const Failure& failure) = 0;

 protected:
  Operation() = default;
};

struct OperationCase {
  const char* name;
  std::function<std::unique_ptr<Operation>()> make;
  // The endings that follow upon each other while the allocation that fails moves from the first to the last, be it
  // alone or with all behind it, and while the call from which on everything fails does.
  std::vector<std::string> withoutMemory, fromThenOn;

  friend std::ostream& operator<<(std::ostream& out, const OperationCase& row) { return out << row.name; }
};

template <typename Class>
OperationCase Case(const char* name, std::vector<std::string> withoutMemory, std::vector<std::string> fromThenOn) {
  return {name, [] { return std::make_unique<Class>(); }, std::move(withoutMemory), std::move(fromThenOn)};
}

// Everything that the library offers to a host.
std::vector<OperationCase> ProductOperations();
std::vector<OperationCase> SaleOperations();
std::vector<OperationCase> ReceiptOperations();
std::vector<OperationCase> SettingOperations();
std::vector<OperationCase> ObjectOperations();

}  // namespace kest::testing
