// A host fetches product lists from a live server through the exports of the built library.
#include <atomic>
#include <memory>
#include <thread>
#include <vector>

#include "road/road_test.h"

namespace kest_road {
namespace {

constexpr char guid[] = "8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A";

class ProductListRoad : public RoadTest {
 protected:
  ProductListRoad() { library.KestSetApplicationGuid(guid); }
  ~ProductListRoad() override {
    library.KestSetProxy("", 0);
    library.KestSetApplicationGuid("");
  }
};

TEST_F(ProductListRoad, TheProductsOfTheVersionComeInTheCataloguesOrder) {
  Configure();
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
  EXPECT_EQ(nullptr, library.KestNextProduct(list));
}

TEST_F(ProductListRoad, FieldsArriveByteForByte) {
  Configure();
  ASSERT_EQ(1, library.KestGetProductList(list, "2.1"));
  KestFieldSet* first = library.KestNextProduct(list);
  ASSERT_EQ(4, library.KestGetFieldCount(first));
  EXPECT_STREQ("SKU", library.KestGetFieldName(first, 0));
  EXPECT_STREQ("Plum Jam", library.KestGetField(first, "name"));
  EXPECT_STREQ("4.50", library.KestGetField(first, "Price"));
  EXPECT_STREQ("ratio 1:2, sweet", library.KestGetField(first, "Note"));
  EXPECT_STREQ("Bl\xC3\xA5" "b\xC3\xA4rssylt", library.KestGetField(library.KestNextProduct(list), "Name"));
}

TEST_F(ProductListRoad, AVersionWithoutProductsGivesAnEmptyList) {
  Configure();
  EXPECT_EQ("", FetchSkus("9.9"));
}

TEST_F(ProductListRoad, OneListIsFetchedTwiceAndSendsItsRecordsAlong) {
  Configure();
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
  EXPECT_EQ(0, ErrorCode());
}

TEST_F(ProductListRoad, AnUnknownApplicationIsAnErrorFieldOfTheReply) {
  Configure();
  library.KestSetApplicationGuid("no such application");
  EXPECT_EQ("", FetchSkus("2.1"));
  EXPECT_STRNE("0", library.KestGetField(KEST_FIELDS(list), "KEST-Error"));
  EXPECT_EQ(0, ErrorCode());
}

TEST_F(ProductListRoad, ConfigurationByFieldSetReachesTheServerToo) {
  KestFieldSet* configuration = library.KestCreateFieldSet();
  library.KestSetField(configuration, "SERVER", server.c_str());
  library.KestSetField(configuration, "PORT", std::to_string(port).c_str());
  library.KestSetField(configuration, "TARVOPK", key.c_str());
  EXPECT_EQ(1, library.KestConfigureServer(configuration));
  library.KestFreeFieldSet(configuration);
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, AServersNameIsLookedUp) {
  ASSERT_EQ(1, library.KestSetServer("localhost", port, key.c_str()));
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, AProxyTakesTheRequestForAServerThatNobodyCanReach) {
  ASSERT_EQ(1, library.KestSetServer("shop.invalid", 8080, key.c_str()));
  library.KestSetProxy(server.c_str(), port);
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, AServerThatIsNotThereGivesCode102) {
  ASSERT_EQ(1, library.KestSetServer("127.0.0.1", 1, key.c_str()));
  EXPECT_EQ("failed with 102", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, AnUnknownServerNameGivesCode102) {
  ASSERT_EQ(1, library.KestSetServer("shop.invalid", port, key.c_str()));
  EXPECT_EQ("failed with 102", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, AnotherServersKeyGivesCode102) {
  // A 1024-bit key that is not this server's.
  const char* other =
      "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQDBWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpa"
      "WlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaWlpaDwIDAQAB";
  ASSERT_EQ(1, library.KestSetServer(server.c_str(), port, other));
  EXPECT_EQ("failed with 102", FetchSkus("2.1"));
}

TEST_F(ProductListRoad, TheNextCallWorksAfterAFailedOne) {
  ASSERT_EQ(1, library.KestSetServer("127.0.0.1", 1, key.c_str()));
  EXPECT_EQ("failed with 102", FetchSkus("2.1"));
  Configure();
  EXPECT_EQ("1042 7 4294967295 ", FetchSkus("2.1"));
  EXPECT_EQ(102, ErrorCode());
}

TEST_F(ProductListRoad, ThreadsWithListsOfTheirOwnFetchSideBySide) {
  Configure();
  std::atomic<int> good{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (int i = 0; i < 5; ++i) {
        KestProductList* own = library.KestCreateProductList();
        int products = 0;
        if (library.KestGetProductList(own, "2.1")) {
          while (library.KestNextProduct(own) != nullptr) ++products;
        }
        good += products == 3 ? 1 : 0;
        library.KestDestroyProductList(own);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(20, good);
}

}  // namespace
}  // namespace kest_road
