// Where the store's keys lie, below the current user's root.
#pragma once

namespace kest {

constexpr char receiptsPath[] = "Software\\Veltrix\\KEST\\Receipts";
constexpr char productsPath[] = "Software\\Veltrix\\KEST\\Products";

}  // namespace kest
