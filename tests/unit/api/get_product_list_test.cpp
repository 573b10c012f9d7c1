#include "api/get_product_list.h"

#include <gtest/gtest.h>

#include "api/library_state.h"
#include "core/exception.h"
#include "support/commerce_fixture.h"

namespace kest {
namespace {

using testing::SealedServer;
using testing::ServerRequest;

class GetProductListTest : public testing::CommerceTest {
 protected:
  GetProductListTest() { SetApplicationGuid("application-guid"); }
  ~GetProductListTest() override { SetApplicationGuid(nullptr); }

  bool Get(ProductList& list) {
    CommerceCall call;
    return GetProductList(call, list, "2.1");
  }
  void FailTheExchange() {
    server.answer = [](SealedServer&, const ServerRequest&) { return SealedServer::Http("", "HTTP/1.0 500 Error"); };
  }
};

TEST_F(GetProductListTest, TheRequestNamesServiceGuidAndVersion) {
  ProductList list;
  ASSERT_TRUE(Get(list));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back())
                    .find("GUID: application-guid\r\nVERSIONID: 2.1\r\nKEST-Service: GetProductList\r\nKEST-Auth-"));
  EXPECT_EQ(0u, server.requests.back().head.find("GET /GetProductList HTTP/1.0\r\n"));
}

TEST_F(GetProductListTest, ProductsAndFieldsOfTheReplyAreLoaded) {
  server.replyFields = {{"KEST-Product", "SKU:1^Name:Tool"}, {"KEST-Product", "SKU:2"}, {"Note", "n"}};
  ProductList list;
  ASSERT_TRUE(Get(list));
  EXPECT_EQ(2u, list.Records().Count());
  EXPECT_STREQ("Tool", list.Next()->Get("Name").Text());
  EXPECT_STREQ("n", list.Get("Note").Text());
  EXPECT_TRUE(list.Get("GUID").IsEmpty());
}

TEST_F(GetProductListTest, AnErrorFieldInTheReplyDoesNotMakeItFail) {
  server.replyFields = {{"KEST-Error", "5"}};
  ProductList list;
  EXPECT_TRUE(Get(list));
  EXPECT_STREQ("5", list.Get("KEST-Error").Text());
  EXPECT_EQ(0, list.ErrorCode());
}

TEST_F(GetProductListTest, AFailedExchangeLeavesCode102AndTheRecordsBefore) {
  server.replyFields = {{"KEST-Product", "SKU:1"}};
  ProductList list;
  ASSERT_TRUE(Get(list));
  FailTheExchange();
  EXPECT_FALSE(Get(list));
  EXPECT_EQ(102, list.ErrorCode());
  EXPECT_EQ(1u, list.Records().Count());
  EXPECT_STREQ("2.1", list.Get("VERSIONID").Text());
}

TEST_F(GetProductListTest, ASuccessDoesNotResetTheErrorCode) {
  ProductList list;
  list.SetErrorCode(102);
  ASSERT_TRUE(Get(list));
  EXPECT_EQ(102, list.ErrorCode());
}

TEST_F(GetProductListTest, AListIsFetchedAgainWithItsRecordsSentAlong) {
  server.replyFields = {{"KEST-Product", "SKU:1^Name:Tool"}, {"KEST-Product", "SKU:2"}};
  ProductList list;
  ASSERT_TRUE(Get(list));
  ASSERT_TRUE(Get(list));
  const std::string request = server.OpenRequest(server.requests.back());
  EXPECT_NE(std::string::npos, request.find("KEST-Product: SKU:1^Name:Tool\r\nKEST-Product: SKU:2\r\n"));
  EXPECT_EQ(2u, list.Records().Count());
}

TEST_F(GetProductListTest, RunningOutOfMemoryInTheExchangeIsAFailedExchange) {
  for (const auto how : {testing::AllocationSystem::Failing::once, testing::AllocationSystem::Failing::fromThenOn}) {
    std::uint64_t failed = 0, thrown = 0;
    for (std::uint64_t point = 1;; ++point) {
      ProductList list;
      list.Set("GUID", "");
      list.Set("VERSIONID", "");
      list.Set("KEST-Service", "");
      CommerceCall call;
      FieldSet reply;
      bool isDone = false;
      memory.FailAt(point, how);
      try {
        isDone = ServiceCall(call, "GetProductList", list, reply);
        failed += isDone ? 0 : 1;
      } catch (const Qor::MemoryException&) {
        ++thrown;
      }
      memory.FailNever();
      EXPECT_EQ(0u, server.OpenSockets());
      if (isDone) break;
      EXPECT_EQ(0u, reply.Fields().Count()) << point;
    }
    EXPECT_GT(failed, 50u);
    EXPECT_EQ(1u, thrown);  // the operation's name, before the exchange begins
  }
}

}  // namespace
}  // namespace kest
