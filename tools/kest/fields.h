// Field sets as lists of names and values that belong to the host.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "library.h"

namespace kest_host {

using Fields = std::vector<std::pair<std::string, std::string>>;

// Every field of `set` in its order.
Fields FieldsOf(Library& library, KestFieldSet* set);

// Letter case of A to Z is ignored, as the library does.
bool IsSameName(const std::string& a, const std::string& b);

// The first field of that name; null when there is none. Belongs to `fields`.
const std::string* Find(const Fields& fields, const std::string& name);

// The pairs of a "KEST-Product" value: name, ":" and value, separated by "^". A value may hold further ":"; what is no
// pair at the end is dropped.
Fields ParseProduct(const std::string& text);

// Moves the "KEST-Product" fields out of `fields` and answers them as products, in their order.
std::vector<Fields> TakeProducts(Fields& fields);

// The number that the library reads in "KEST-Error": every byte less that of "0" is taken for a decimal digit, modulo 2^32.
std::int32_t ReadErrorCode(const std::string& text);

// A decimal number from 0 to `greatest`; false for anything else.
bool ParseNumber(const std::string& text, std::uint64_t greatest, std::uint64_t& number);

}  // namespace kest_host
