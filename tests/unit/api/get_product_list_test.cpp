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

TEST_F(GetProductListTest, ARepeatedCallAsksForTheNewVersionAlone) {
  ProductList list;
  CommerceCall call;
  SetApplicationGuid("first-guid");
  FailTheExchange();
  EXPECT_FALSE(GetProductList(call, list, "1.0"));
  SetApplicationGuid("second-guid");
  server.answer = [](SealedServer& self, const ServerRequest& request) { return self.AnswerHonestly(request); };
  ASSERT_TRUE(GetProductList(call, list, "2.0"));
  EXPECT_EQ(0u, server.OpenRequest(server.requests.back())
                    .find("GUID: second-guid\r\nVERSIONID: 2.0\r\nKEST-Service: GetProductList\r\nKEST-Auth-"));
}

TEST_F(GetProductListTest, AServiceCallReplacesTheReplyWholeAndSetsNoErrorCode) {
  server.replyFields = {{"Note", "n"}};
  FieldSet request, reply;
  CommerceCall call;
  request.SetErrorCode(7);
  reply.SetErrorCode(8);
  reply.Add("before", "1");
  ASSERT_TRUE(ServiceCall(call, "GetProductList", request, reply));
  EXPECT_EQ(7, request.ErrorCode());
  EXPECT_EQ(0, reply.ErrorCode());
  EXPECT_STREQ("1.0", reply.Version().Text());
  EXPECT_TRUE(reply.Get("before").IsEmpty());
  FailTheExchange();
  reply.SetErrorCode(8);
  EXPECT_FALSE(ServiceCall(call, "GetProductList", request, reply));
  EXPECT_EQ(7, request.ErrorCode());
  EXPECT_EQ(8, reply.ErrorCode());
  EXPECT_STREQ("n", reply.Get("Note").Text());
}

TEST_F(GetProductListTest, MemoryThatEndsWhileTheListIsLoadedKeepsTheRecordsBefore) {
  server.replyFields = {{"KEST-Product", "SKU:1"}, {"KEST-Product", "SKU:2"}};
  bool isDone = false;
  std::uint64_t kept = 0;
  for (std::uint64_t point = 1; !isDone; ++point) {
    ProductList list;
    server.replyFields[0].second = "SKU:1";
    ASSERT_TRUE(Get(list));
    server.replyFields[0].second = "SKU:3";
    memory.FailAt(point, testing::AllocationSystem::Failing::once);
    try {
      isDone = Get(list);
    } catch (const Qor::MemoryException&) {
    }
    memory.FailNever();
    ASSERT_EQ(2u, list.Records().Count()) << point;
    EXPECT_STREQ(isDone ? "3" : "1", list.Records().At(0).Get("SKU").Text()) << point;
    EXPECT_STREQ("2", list.Records().At(1).Get("SKU").Text()) << point;
    kept += isDone ? 0 : 1;
  }
  EXPECT_GT(kept, 100u);
}

TEST_F(GetProductListTest, LoadingMakesRoomAtOnce) {
  const auto allocations = [this](std::uint32_t products) {
    FieldSet reply;
    for (std::uint32_t i = 0; i < products; ++i) reply.Add("KEST-Product", "SKU:1");
    for (std::uint32_t i = 0; i < products; ++i) reply.Add("Note", "n");
    ProductList list;
    memory.Restart();
    list.Load(reply);
    return memory.Allocations();
  };
  // Four for each product (its version, its list, its name and value), one for the records, one for the fields.
  EXPECT_EQ(1000u * 4 + 2, allocations(1000));
  EXPECT_EQ(4000u * 4 + 2, allocations(4000));
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
