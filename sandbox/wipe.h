// Overwrites texts that held a key, a challenge or the plain text of a message, so that memory given back holds none of
// them. It reaches what the text itself owns: whoever lets a text grow reserves its length first, because a growing
// text leaves its old bytes behind. No state: any thread may call.
#pragma once

#include <string>

#include "fields.h"

namespace sandbox {

/// Overwrites the text with zero bytes up to its capacity and empties it.
void Wipe(std::string& text);

/// Wipes names and values of all fields and empties the list.
void Wipe(FieldList& fields);

/// Wipes what it is given when the scope ends, however it ends. Make it before the text is filled: filling may throw.
template <typename Held>
class WipedAtEnd {
 public:
  explicit WipedAtEnd(Held& toWipe) : held(toWipe) {}
  ~WipedAtEnd() { Wipe(held); }
  WipedAtEnd(const WipedAtEnd&) = delete;
  WipedAtEnd& operator=(const WipedAtEnd&) = delete;

 private:
  Held& held;
};

}  // namespace sandbox
