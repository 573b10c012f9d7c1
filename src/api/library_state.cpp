#include "api/library_state.h"

#include <utility>

namespace kest {
namespace {

LibraryState state;

}  // namespace

LibraryState& State() { return state; }

void SetApplicationGuid(const char* guid) {
  String text(guid);
  state.applicationGuid = std::move(text);
  state.resellerList.Empty();
}

}  // namespace kest
