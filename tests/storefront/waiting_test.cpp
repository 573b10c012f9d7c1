// While the server lets wait, and when its answer never comes.
#include "storefront/storefront_test.h"

namespace storefront_test {
namespace {

class Waiting : public StorefrontTest {
 protected:
  // The answer to the next sale waits. The sale itself is made at once.
  void DelaySale(int milliseconds) {
    admin.AskFor({{{"kind", "delay"}, {"milliseconds", milliseconds}, {"service", "BillCustomer"}}});
  }
  // The answer to the next sale is lost. The sale itself is made.
  void LoseAnswer() { admin.AskFor({{{"kind", "close"}, {"bytes", 0}, {"service", "BillCustomer"}}}); }
  bool IsPaying() const { return app->Shows(IDC_MESSAGE, L"Paying"); }
};

constexpr int longer = 60000;  // than any test; the server ends the wait when it is stopped

TEST_F(Waiting, WindowAnswersMouseAndKeysWhileASaleWaits) {
  Open();
  DelaySale(4000);
  Order(0, "1");
  ASSERT_TRUE(WaitForMessage(L"Paying"));
  ASSERT_TRUE(app->WaitFor([this] { return admin.Sales() == 1; }));
  app->ClickRow(IDC_PRODUCTS, 4);
  EXPECT_TRUE(app->WaitFor([this] { return app->Text(IDC_CHOICE) == L"Template Collection"; }));
  app->Fill(IDC_QUANTITY, "3");
  EXPECT_TRUE(app->WaitFor([this] { return app->Text(IDC_SUBTOTAL) == L"$29.70"; }));
  EXPECT_TRUE(IsPaying()) << "the answer was there before the window could show anything";
  EXPECT_TRUE(WaitForMessage(L"Thank you"));
  EXPECT_TRUE(app->Shows(IDC_RECEIPT, L"1 x Lantern Standard")) << "what was chosen meanwhile is not what was bought";
}

TEST_F(Waiting, NothingElseIsSentWhileASaleWaits) {
  Open();
  DelaySale(longer);
  Order(0, "1");
  ASSERT_TRUE(app->WaitFor([this] { return admin.Sales() == 1; }));
  EXPECT_FALSE(app->IsEnabled(IDC_BUY));
  EXPECT_FALSE(app->IsEnabled(IDC_REFRESH));
  FillCard();
  PressKey(VK_RETURN);
  PressKey(VK_F5);
  app->Click(IDC_BUY);
  // Input is taken in its order: what is typed last arrives after all that stands before it.
  app->Fill(IDC_QUANTITY, "7");
  EXPECT_TRUE(IsPaying());
  EXPECT_EQ(1u, admin.Sales());
  EXPECT_EQ(L"4111111111111111", app->Text(IDC_NUMBER)) << "the second order has been taken";
}

TEST_F(Waiting, LostAnswerIsToldAsUnknownWithWhatToDo) {
  Open();
  LoseAnswer();
  Order(1, "2");
  EXPECT_TRUE(WaitForMessage(L"It is not known whether you have paid"));
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"Do not press Buy again before you have looked at your card's account"));
  const std::vector<Row> sales = app->PastSales();
  ASSERT_EQ(1u, sales.size());
  EXPECT_EQ(Row({L"Lantern Professional", L"2", L"", L"Not known"}), Row(sales[0].begin() + 1, sales[0].end()));
  EXPECT_TRUE(app->Shows(IDC_RECEIPT, L"This is not a receipt"));
  const std::string order = ValueOf(LastBilling().at("request"), "X-Order");
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"about order " + std::wstring(order.begin(), order.end()))) << order;
}

TEST_F(Waiting, AfterALostAnswerEnterDoesNotBuyAgain) {
  Open();
  LoseAnswer();
  Order(1, "1");
  ASSERT_TRUE(WaitForMessage(L"not known"));
  Order(1, "1");
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  EXPECT_NE(std::wstring::npos, app->BoxText().find(L"so that you do not pay twice?"));
  PressKey(VK_RETURN);
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() == nullptr; }));
  EXPECT_TRUE(app->IsEnabled(IDC_BUY)) << "something is on its way";
  EXPECT_EQ(1u, admin.Sales());
}

TEST_F(Waiting, BuyerWhoHasLookedMayBuyAgain) {
  Open();
  LoseAnswer();
  Order(1, "1");
  ASSERT_TRUE(WaitForMessage(L"not known"));
  Order(0, "1");
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  app->AnswerBox(IDYES);
  EXPECT_TRUE(WaitForMessage(L"Thank you"));
  EXPECT_EQ(2u, admin.Sales());
  EXPECT_EQ(L"Looked into", app->PastSales().at(1).at(4));
}

TEST_F(Waiting, ClosingDuringASaleAsksAndNoLeavesItOpen) {
  Open();
  DelaySale(3000);
  Order(0, "1");
  ASSERT_TRUE(app->WaitFor([this] { return admin.Sales() == 1; }));
  PressKey(VK_F4, VK_MENU);
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  EXPECT_NE(std::wstring::npos, app->BoxText().find(L"closing does not stop it"));
  app->AnswerBox(IDNO);
  EXPECT_TRUE(WaitForMessage(L"Thank you"));
  EXPECT_EQ(L"Paid", app->PastSales().at(0).at(4));
}

TEST_F(Waiting, SaleThatWasClosedUponIsUnknownAtTheNextStart) {
  Open();
  DelaySale(longer);
  Order(0, "1");
  ASSERT_TRUE(app->WaitFor([this] { return admin.Sales() == 1; }));
  PressKey(VK_F4, VK_MENU);
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  app->AnswerBox(IDYES);
  ASSERT_TRUE(app->WaitForEnd());
  ASSERT_NO_FATAL_FAILURE(OpenWindow());
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  EXPECT_NE(std::wstring::npos, app->BoxText().find(L"never arrived"));
  app->AnswerBox(IDOK);
  EXPECT_EQ(L"Not known", app->PastSales().at(0).at(4));
}

}  // namespace
}  // namespace storefront_test
