// What a test reads of the objects that a host holds, and what it says when they are not as they should be.
#pragma once

#include <string>
#include <vector>

#include "core/field_set.h"
#include "fault/fault_world.h"
#include "fault/operation.h"

namespace kest::testing {

inline FaultWorld& World() {
  return FaultWorld::Current();
}

Fields FieldsOf(const FieldSet& set);
// The honest reply's fields as they arrive: the challenges before them; without the products where `products` is false.
Fields ReplyFields(bool products);
// Empty when `have` is the beginning of `whole` and has at least `least` fields.
std::string BeginningFault(const Fields& have, const Fields& whole, std::size_t least);

// The code that an object has before an operation, which a success and a lack of memory leave there.
constexpr std::int32_t codeBefore = 41;

// How an operation of exchange ended that found `before` in its object and left `code` there.
std::string EndingOfExchange(bool isDone, std::int32_t before, std::int32_t code);
// How an exchange with the server ends when one call fails: without the network there is none, but entropy has other
// sources, the registry is not needed, a cut piece is followed by the next, and closing is closing.
std::string EndingOfExchangeAfter(const Failure& failure);

}  // namespace kest::testing
