// The same road with a catalogue of many products.
#include "road/road_test.h"

namespace kest_road {
namespace {

using ManyProductsRoad = RoadTest;

TEST_F(ManyProductsRoad, EveryProductArrivesAndTheListCanBeSentBack) {
  const int wanted = std::stoi(Environment("KEST_PRODUCTS"));
  Configure();
  library.KestSetApplicationGuid("many");
  for (int round = 0; round < 2; ++round) {
    ASSERT_EQ(1, library.KestGetProductList(list, "1")) << round;
    for (int sku = 1; sku <= wanted; ++sku) {
      KestFieldSet* product = library.KestNextProduct(list);
      ASSERT_NE(nullptr, product);
      ASSERT_EQ(std::to_string(sku), library.KestGetField(product, "SKU"));
      ASSERT_EQ("Product number " + std::to_string(sku), library.KestGetField(product, "Name"));
    }
    EXPECT_EQ(nullptr, library.KestNextProduct(list));
  }
}

}  // namespace
}  // namespace kest_road
