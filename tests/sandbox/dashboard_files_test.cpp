// Does the admin port serve the dashboard, and what it asks for? The page itself is looked at in a browser.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "dashboard_files.h"
#include "fault.h"
#include "sandbox/admin_client.h"
#include "sandbox/test_server.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using Json = nlohmann::json;

class Dashboard : public ::testing::Test {
 protected:
  // Orders for a card and returns the KEST-Error of the answer.
  std::string Buy(const std::string& card, const std::vector<std::string>& lines = {"SKU:1042^Quantity:2"}) {
    Fields order = {{"KEST-CCard-Number", card}};
    for (const std::string& line : lines) order.emplace_back("KEST-Product", line);
    return Value(client.Call("BillCustomer", order).value_or(Fields()), "KEST-Error");
  }

  TestServer server;
  TestClient client{server.Port(), server.KeyText()};
  AdminClient admin{server.AdminPort()};
};

TEST_F(Dashboard, PageIsHtml) {
  const AdminAnswer page = admin.Get("/");
  EXPECT_EQ(page.status, 200);
  EXPECT_EQ(Value(page.headers, "Content-Type"), "text/html; charset=utf-8");
  EXPECT_THAT(page.body, HasSubstr("<title>KEST sandbox</title>"));
}

TEST_F(Dashboard, EachOfItsFilesIsServedByItsName) {
  ASSERT_GE(sandbox::dashboardFileCount, 2u);
  for (std::size_t i = 0; i < sandbox::dashboardFileCount; i++) {
    const sandbox::DashboardFile& file = sandbox::dashboardFiles[i];
    const AdminAnswer answer = admin.Get(std::string("/dashboard/") + file.name);
    EXPECT_EQ(answer.status, 200) << file.name;
    EXPECT_EQ(answer.body, file.text) << file.name;
    EXPECT_GT(answer.body.size(), 100u) << file.name;
  }
}

TEST_F(Dashboard, FilesHaveTheTypeThatABrowserNeeds) {
  EXPECT_EQ(Value(admin.Get("/dashboard/dashboard.css").headers, "Content-Type"), "text/css; charset=utf-8");
  EXPECT_EQ(Value(admin.Get("/dashboard/dashboard.js").headers, "Content-Type"), "text/javascript; charset=utf-8");
  EXPECT_EQ(Value(admin.Get("/dashboard/icon.svg").headers, "Content-Type"), "image/svg+xml");
}

TEST_F(Dashboard, FilesAreOnlyRead) {
  const AdminAnswer answer = admin.Post("/dashboard/dashboard.js", "{}");
  EXPECT_EQ(answer.status, 405);
  EXPECT_EQ(Value(answer.headers, "Allow"), "GET");
}

TEST_F(Dashboard, QueryOfAPageIsLetPass) {
  EXPECT_EQ(admin.Get("/?theme=dark").status, 200);
}

TEST_F(Dashboard, PageOfAnotherSiteGetsNoneOfItsFiles) {
  const std::string lines = " HTTP/1.1\r\nHost: 127.0.0.1:7\r\nOrigin: http://example.com\r\n\r\n";
  EXPECT_EQ(admin.Send("GET /" + lines).status, 403);
  EXPECT_EQ(admin.Send("GET /dashboard/faults.js" + lines).status, 403);
}

TEST_F(Dashboard, EveryReplyShutsOutOtherScriptsAndSites) {
  for (const char* path : {"/", "/dashboard/faults.js", "/state", "/none"}) {
    const Fields headers = admin.Get(path).headers;
    EXPECT_THAT(Value(headers, "Content-Security-Policy"), HasSubstr("default-src 'none'; script-src 'self'")) << path;
    EXPECT_THAT(Value(headers, "Content-Security-Policy"), HasSubstr("frame-ancestors 'none'")) << path;
    EXPECT_THAT(Value(headers, "Content-Security-Policy"), Not(HasSubstr("unsafe"))) << path;
    EXPECT_EQ(Value(headers, "Cross-Origin-Resource-Policy"), "same-origin") << path;
    EXPECT_EQ(Value(headers, "X-Content-Type-Options"), "nosniff") << path;
    EXPECT_EQ(Value(headers, "Cache-Control"), "no-store") << path;
  }
}

TEST_F(Dashboard, HasASwitchForEachKindOfFault) {
  const std::string page = admin.Get("/dashboard/faults.js").body;
  for (std::size_t i = 0; i < sandbox::faultKindCount; i++) {
    EXPECT_THAT(page, HasSubstr(std::string("{ kind: '") + sandbox::faultKinds[i].name + "'"));
  }
}

TEST_F(Dashboard, SalesAreToldWithTheirLines) {
  ASSERT_EQ(Buy("4111111111111111", {"SKU:1042^Quantity:2", "SKU:7^Quantity:1"}), "0");
  const Json told = admin.Get("/sales").json;
  ASSERT_EQ(told["sales"].size(), 1u);
  Json sale = told["sales"][0];
  EXPECT_THAT(sale["time"].get<std::string>(), ::testing::MatchesRegex("20..-..-..T..:..:..Z"));
  sale.erase("time");
  EXPECT_EQ(sale, Json::parse(R"({"number": 100001, "merchant": "KESTAPI sandbox", "card": "41**********1111",
      "total": "3.00", "tax": "0.00", "lines": 2, "products": [
        {"sku": "1042", "name": "Pen: blue", "price": "1.50", "quantity": 2},
        {"sku": "7", "name": "Gruß", "price": "0.00", "quantity": 1}]})"));
  EXPECT_EQ(told["refusals"], Json::array());
}

TEST_F(Dashboard, DeclinedCardsAreToldWithTheReason) {
  ASSERT_EQ(Buy("4000000000000002"), "1403");
  ASSERT_EQ(Buy("not a card"), "1402");
  Json told = admin.Get("/sales").json;
  ASSERT_EQ(told["refusals"].size(), 2u);
  EXPECT_EQ(told["sales"], Json::array());
  EXPECT_EQ(told["refusals"][0]["code"], 1402);
  EXPECT_EQ(told["refusals"][0]["card"], "");
  Json declined = told["refusals"][1];
  declined.erase("time");
  EXPECT_EQ(declined, Json::parse(
      R"({"card": "40**********0002", "amount": "3.00", "code": 1403, "meaning": "the card was declined"})"));
}

TEST_F(Dashboard, OfManySalesTheNewestAreTold) {
  sandbox::Ledger ledger(server.SalesFile());
  sandbox::Sale sale;
  for (int i = 0; i < 21; i++) sale.products.push_back({std::to_string(i), "n", "1.00", 1});
  for (int i = 0; i < 51; i++) {
    ledger.RecordSale(sale);
    ledger.RecordRefusal(1403 + i % 2, "", i);
  }
  const Json told = admin.Get("/sales").json;
  ASSERT_EQ(told["sales"].size(), 50u);
  EXPECT_EQ(told["sales"][0]["number"], 100051);
  EXPECT_EQ(told["sales"][49]["number"], 100002);
  EXPECT_EQ(told["sales"][0]["lines"], 21);
  ASSERT_EQ(told["sales"][0]["products"].size(), 20u);
  EXPECT_EQ(told["sales"][0]["products"][19]["sku"], "19");
  ASSERT_EQ(told["refusals"].size(), 50u);
  EXPECT_EQ(told["refusals"][0]["amount"], "0.50");
}

TEST_F(Dashboard, DigitsOfACardInTheNameOfAProductAreMasked) {
  sandbox::Ledger ledger(server.SalesFile());
  sandbox::Sale sale;
  sale.merchant = "4111111111111111";
  sale.products.push_back({"1", "4111 1111 1111 1111", "1.00", 1});
  ledger.RecordSale(sale);
  const std::string told = admin.Get("/sales").body;
  EXPECT_THAT(told, HasSubstr("41** **** **** 1111"));
  EXPECT_THAT(told, HasSubstr("41**********1111"));
  EXPECT_THAT(told, Not(HasSubstr("4111111111111111")));
}

TEST_F(Dashboard, ResetForgetsWhatSalesTell) {
  ASSERT_EQ(Buy("4111111111111111"), "0");
  ASSERT_EQ(Buy("4000000000000002"), "1403");
  admin.Post("/reset");
  EXPECT_EQ(admin.Get("/sales").json, Json::parse(R"({"sales": [], "refusals": []})"));
}

TEST_F(Dashboard, FaultsOfOneKindAreForgottenAndTheOthersStay) {
  admin.Post("/faults", R"({"faults": [{"kind": "delay", "milliseconds": 1}, {"kind": "bad-padding", "times": 5},
                                       {"kind": "delay", "milliseconds": 2, "times": "always"}]})");
  const AdminAnswer answer = admin.Post("/faults/clear", R"({"kind": "delay"})");
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.json, Json({{"faults", 1}}));
  EXPECT_EQ(admin.Get("/state").json["faults"], Json::parse(R"([{"kind": "bad-padding", "times": 5, "left": 5}])"));
}

TEST_F(Dashboard, KindThatCannotBeReadForgetsNothing) {
  admin.Post("/faults", R"({"faults": [{"kind": "delay", "milliseconds": 1}]})");
  for (const char* body : {"", "{}", R"({"kind": "delays"})", R"({"kind": 1})", R"({"kind": "delay", "at": "request"})",
                           R"({"kind": "delay", "kind": "delay"})", R"(["delay"])"}) {
    EXPECT_EQ(admin.Post("/faults/clear", body).status, 400) << body;
  }
  EXPECT_EQ(admin.Get("/state").json["faults"].size(), 1u);
}

}  // namespace
}  // namespace sandboxtest
