// The fields of a billing reply. Whoever makes it owns it; one purchase belongs to one thread at a time.
#pragma once

#include <utility>

#include "core/field_set.h"

namespace kest {

class Purchase : public FieldSet {
 public:
  Purchase() = default;
  ~Purchase() override = default;

  // Becomes the reply, fields and all; nothing in it can fail.
  void Load(FieldSet&& reply) noexcept { FieldSet::operator=(std::move(reply)); }
};

static_assert(sizeof(void*) != 4 || sizeof(Purchase) == 60, "the layout that 32-bit hosts may read");

}  // namespace kest
