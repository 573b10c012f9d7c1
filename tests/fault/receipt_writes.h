// What a sale writes into the registry, in its order: the products' marker of every granted reply, then the receipt,
// then both markers. A failure leaves out what the failed call was to write, and of a receipt all that comes behind a
// key which could not be made; nothing else.
#pragma once

#include <string>
#include <vector>

#include "fault/host_objects.h"

namespace kest::testing {

class ReceiptWrites {
 public:
  // Before a sale: finds the number that its receipt will have.
  void Begin();
  // After one that the server has granted.
  std::string Fault(const Failure& failure) const;
  // After a bill: the products' marker alone.
  static std::string MarkFault(bool isDone, const Failure& failure);

  // The key of the day that the machine shows.
  static std::string Day();

 private:
  // All of them, the key of the receipt being `receipt`.
  static std::vector<std::string> Whole(const std::string& receipt);

  int sequence = 1;
};

}  // namespace kest::testing
