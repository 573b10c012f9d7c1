#include "road/road_test.h"

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <stdexcept>

namespace kest_road {

std::string Environment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) throw std::runtime_error(std::string(name) + " is not set; run this through ctest");
  return value;
}

std::string ReadFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  if (!file) throw std::runtime_error(path + " cannot be read");
  return text.str();
}

RoadTest::RoadTest() : library(Environment("KESTAPI_LIBRARY")) {}

RoadTest::~RoadTest() { library.KestDestroyProductList(list); }

void RoadTest::Configure() { ASSERT_EQ(1, library.KestSetServer(server.c_str(), port, key.c_str())); }

std::string RoadTest::FetchSkus(const char* versionId) {
  if (!library.KestGetProductList(list, versionId)) return "failed with " + std::to_string(ErrorCode());
  std::string skus;
  while (KestFieldSet* product = library.KestNextProduct(list)) {
    skus += std::string(library.KestGetField(product, "SKU")) + " ";
  }
  return skus;
}

}  // namespace kest_road
