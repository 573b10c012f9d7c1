// The library's objects in C++: each is destroyed by the function of its kind, also when an exception passes.
#pragma once

#include <kestapi.h>

#include <memory>
#include <new>

namespace kest {

template <auto destroy>
struct Destroyer {
  template <typename Object>
  void operator()(Object* object) const {
    destroy(object);
  }
};

using ProductList = std::unique_ptr<KestProductList, Destroyer<KestDestroyProductList>>;
using Checkout = std::unique_ptr<KestCheckout, Destroyer<KestDestroyCheckout>>;

// Takes what a KestCreate... function answered. Throws std::bad_alloc when that is null.
template <typename Owner>
Owner Own(typename Owner::pointer created) {
  if (created == nullptr) throw std::bad_alloc();
  return Owner(created);
}

// A field's value, which lives as long as the object's fields; an empty text when there is no such field.
template <typename Object>
const char* Field(Object* object, const char* name) {
  const char* value = KestGetField(KEST_FIELDS(object), name);
  return value != nullptr ? value : "";
}

}  // namespace kest
