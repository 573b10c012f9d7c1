// The base of the road tests: a host that has loaded the built library and knows the server that runs beside it. What
// stands in the environment is set by scripts/with-sandbox and CMake: KESTAPI_LIBRARY, KEST_SERVER, KEST_PORT,
// KEST_KEY_FILE.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "library.h"

namespace kest_road {

std::string Environment(const char* name);
std::string ReadFile(const std::string& path);

class RoadTest : public ::testing::Test {
 protected:
  RoadTest();
  ~RoadTest() override;

  // Points the library at the server beside the test.
  void Configure();
  // Fetches into `list` and answers the products' fields "SKU" in order, each followed by a blank.
  std::string FetchSkus(const char* versionId);
  std::int32_t ErrorCode() { return library.KestGetErrorCode(KEST_FIELDS(list)); }

  kest_host::Library library;
  std::string server = Environment("KEST_SERVER");
  std::uint32_t port = static_cast<std::uint32_t>(std::stoul(Environment("KEST_PORT")));
  std::string key = ReadFile(Environment("KEST_KEY_FILE"));
  KestProductList* list = library.KestCreateProductList();
};

}  // namespace kest_road
