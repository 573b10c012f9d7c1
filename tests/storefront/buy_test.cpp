// A sale by mouse and by keyboard, and what is told when there is none.
#include <cstdlib>

#include "storefront/screenshot.h"
#include "storefront/storefront_test.h"

namespace storefront_test {
namespace {

using Buy = StorefrontTest;

constexpr int professional = 1;  // its row; 79.00
const std::string goodCard = "4111111111111111";
const std::string declinedCard = "4000000000000002";

TEST_F(Buy, GoodCardShowsTheReceiptAndTheServerHasTheSale) {
  Open();
  Order(professional, "2");
  ASSERT_TRUE(WaitForMessage(L"Thank you for your purchase")) << "the window says otherwise";
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"$173.80 was charged to your card"));
  for (const wchar_t* line : {L"Lantern Workshop", L"2 x Lantern Professional", L"Price:\t$158.00", L"Tax:\t$15.80",
                              L"Total:\t$173.80", L"Paid with:\tVisa ending in 1111"}) {
    EXPECT_TRUE(app->Shows(IDC_RECEIPT, line)) << "no line of the receipt: " << std::string(line, line + wcslen(line));
  }
  EXPECT_EQ(1u, admin.Sales());
  const std::string number = ValueOf(LastBilling().at("reply"), "KEST-TxN");
  EXPECT_TRUE(app->Shows(IDC_RECEIPT, L"Transaction:\t" + std::wstring(number.begin(), number.end()))) << number;
  EXPECT_EQ("SKU:1043^Quantity:2", ValueOf(LastBilling().at("request"), "KEST-Product"));
}

TEST_F(Buy, EnterInAFieldBuys) {
  Open();
  FillCard();
  PressKey(VK_RETURN);
  EXPECT_TRUE(WaitForMessage(L"Thank you for your purchase"));
  EXPECT_EQ(1u, admin.Sales());
}

TEST_F(Buy, CardTravelsInTheFieldsThatTheSettingsName) {
  Open();
  Order(professional, "1");
  ASSERT_TRUE(WaitForMessage(L"Thank you"));
  const nlohmann::json request = LastBilling().at("request");
  // The server shows the first two characters and the last four of what belongs to a card, or stars.
  EXPECT_EQ("41**********1111", ValueOf(request, "KEST-CCard-Number"));
  EXPECT_EQ("*****", ValueOf(request, "KEST-CCard-Expiry"));
  EXPECT_EQ("****", ValueOf(request, "KEST-CCard-Code"));
}

TEST_F(Buy, CardIsGoneFromTheWindowAfterASaleAndAfterARefusal) {
  Open();
  const std::pair<std::string, std::wstring> outcomes[] = {{goodCard, L"Thank you"}, {declinedCard, L"was declined"}};
  for (const auto& [number, words] : outcomes) {
    TestCard card;
    card.number = number;
    Order(professional, "1", card);
    ASSERT_TRUE(WaitForMessage(words));
    for (const int field : {IDC_NUMBER, IDC_HOLDER, IDC_EXPIRY, IDC_CODE}) EXPECT_EQ(L"", app->Text(field)) << field;
  }
}

TEST_F(Buy, DecliningCardIsToldInWordsAndSellsNothing) {
  Open();
  TestCard card;
  card.number = declinedCard;
  Order(professional, "2", card);
  EXPECT_TRUE(WaitForMessage(L"Your card was declined"));
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"Nothing was charged"));
  EXPECT_TRUE(app->IsEnabled(IDC_BUY));
  EXPECT_EQ(0u, admin.Sales());
  EXPECT_TRUE(app->PastSales().empty());
}

TEST_F(Buy, MistypedNumberIsNotSentAndLeadsBackToItsField) {
  Open();
  const unsigned before = RequestCount();
  TestCard card;
  card.number = "4111111111111112";
  Order(professional, "1", card);
  EXPECT_TRUE(WaitForMessage(L"a digit is missing or wrong"));
  EXPECT_EQ(IDC_NUMBER, app->FocusedPart());
  EXPECT_EQ(before, RequestCount());
}

TEST_F(Buy, ServerThatIsGoneIsToldAndNothingWasCharged) {
  Open();
  // Neither message of the product list, which goes before the sale, gets an answer.
  admin.AskFor({{{"kind", "close"}, {"bytes", 0}, {"service", "GetProductList"}, {"at", "handshake"}}});
  Order(professional, "1");
  EXPECT_TRUE(WaitForMessage(L"The shop cannot be reached"));
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"Nothing was charged"));
  EXPECT_EQ(0u, admin.Sales());
  EXPECT_TRUE(app->PastSales().empty());
}

TEST_F(Buy, PriceThatChangedMeanwhileIsShownAndNotCharged) {
  admin.AskFor({{{"kind", "field"}, {"name", "KEST-Product"}, {"value", "SKU:1043^Name:Lantern^Price:7.00"},
                 {"service", "GetProductList"}}});
  Open();
  ASSERT_EQ(L"$7.00", app->Products().at(0).at(1));
  Order(0, "1");
  EXPECT_TRUE(WaitForMessage(L"The price has changed"));
  EXPECT_EQ(L"$79.00", app->Products().at(professional).at(1));
  EXPECT_EQ(professional, ChosenRow(app->Part(IDC_PRODUCTS))) << "what was chosen by its old price stays chosen";
  EXPECT_EQ(0u, admin.Sales());
}

TEST_F(Buy, EverySaleStandsInTheListWithTheNewestFirst) {
  Open();
  Order(5, "1");
  ASSERT_TRUE(WaitForSales(1));
  Order(professional, "2");
  ASSERT_TRUE(WaitForSales(2));
  const std::vector<Row> sales = app->PastSales();
  ASSERT_EQ(2u, sales.size());
  EXPECT_EQ(Row({L"Lantern Professional", L"2", L"$173.80", L"Paid"}), Row(sales[0].begin() + 1, sales[0].end()));
  EXPECT_EQ(Row({L"One Year of Updates", L"1", L"$20.90", L"Paid"}), Row(sales[1].begin() + 1, sales[1].end()));
  // The picture of docs/storefront.md.
  const char* picture = std::getenv("KEST_SCREENSHOT");
  EXPECT_TRUE(picture == nullptr || SaveScreenshot(app->Window(), picture));
}

}  // namespace
}  // namespace storefront_test
