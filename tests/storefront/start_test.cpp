// The window as it opens: what it shows, how it is reached from the keyboard, how it follows its size.
#include "storefront/storefront_test.h"

namespace storefront_test {
namespace {

using Start = StorefrontTest;

// Nothing listens there.
constexpr unsigned deadPort = 1;

TEST_F(Start, ServersProductsAreListedInTheirOrderWithPrices) {
  Open();
  const std::vector<Row> expected = {{L"Lantern Standard", L"$29.00"},
                                     {L"Lantern Professional", L"$79.00"},
                                     {L"Lantern Family Pack (5 computers)", L"$119.00"},
                                     {L"W\u00F6rterbuch Deutsch\u2013Fran\u00E7ais", L"$12.50"},
                                     {L"Template Collection", L"$9.90"},
                                     {L"One Year of Updates", L"$19.00"}};
  EXPECT_EQ(expected, app->Products());
}

TEST_F(Start, ChosenProductAndQuantityGiveThePrice) {
  Open();
  app->ClickRow(IDC_PRODUCTS, 3);
  app->Fill(IDC_QUANTITY, "12");
  EXPECT_TRUE(app->WaitFor([this] { return app->Text(IDC_SUBTOTAL) == L"$150.00"; })) << "12 times 12.50";
  EXPECT_EQ(L"W\u00F6rterbuch Deutsch\u2013Fran\u00E7ais", app->Text(IDC_CHOICE));
}

TEST_F(Start, ServerThatIsNotThereIsSaidToBeOutOfReach) {
  OpenWindow(deadPort);
  EXPECT_TRUE(WaitForMessage(L"The shop cannot be reached"));
  EXPECT_TRUE(app->Shows(IDC_MESSAGE, L"press Refresh"));
  EXPECT_TRUE(app->Products().empty());
}

TEST_F(Start, RefreshKeyFetchesTheProductsAgain) {
  Open();
  const unsigned before = RequestCount();
  PressKey(VK_F5);
  EXPECT_TRUE(app->WaitFor([&] { return RequestCount() == before + 2; })) << "a handshake and a request";
}

TEST_F(Start, TabKeyGoesThroughTheWindowInReadingOrder) {
  Open();
  app->ClickRow(IDC_PRODUCTS, 0);
  for (const int part : {IDC_REFRESH, IDC_QUANTITY, IDC_NUMBER, IDC_HOLDER, IDC_EXPIRY, IDC_CODE, IDC_BUY, IDC_PAST,
                         IDC_RECEIPT, IDC_PRODUCTS}) {
    PressKey(VK_TAB);
    EXPECT_TRUE(app->WaitFor([&] { return app->FocusedPart() == part; }, 5)) << part << ", not " << app->FocusedPart();
  }
}

TEST_F(Start, UnderlinedLettersLeadToTheFields) {
  Open();
  const std::pair<WORD, int> letters[] = {{'N', IDC_NUMBER}, {'Q', IDC_QUANTITY}, {'C', IDC_HOLDER},
                                          {'E', IDC_EXPIRY}, {'O', IDC_CODE},     {'P', IDC_PRODUCTS},
                                          {'S', IDC_PAST},   {'I', IDC_RECEIPT}};
  for (const auto& [letter, part] : letters) {
    PressKey(letter, VK_MENU);
    EXPECT_TRUE(app->WaitFor([&] { return app->FocusedPart() == part; }, 5)) << static_cast<char>(letter);
  }
}

TEST_F(Start, LargerWindowGivesItsListsTheRoom) {
  Open();
  RECT before, after, window;
  GetWindowRect(app->Part(IDC_PRODUCTS), &before);
  GetWindowRect(app->Window(), &window);
  SetWindowPos(app->Window(), nullptr, 0, 0, window.right - window.left + 200, window.bottom - window.top + 100,
               SWP_NOZORDER);
  GetWindowRect(app->Part(IDC_PRODUCTS), &after);
  EXPECT_EQ(before.right - before.left + 200, after.right - after.left);
  EXPECT_EQ(before.bottom - before.top + 50, after.bottom - after.top);
}

TEST_F(Start, WindowGetsNoSmallerThanItsParts) {
  Open();
  RECT before, after;
  GetWindowRect(app->Window(), &before);
  SetWindowPos(app->Window(), nullptr, 0, 0, 100, 100, SWP_NOZORDER);
  GetWindowRect(app->Window(), &after);
  EXPECT_EQ(before.right - before.left, after.right - after.left);
  EXPECT_EQ(before.bottom - before.top, after.bottom - after.top);
}

TEST_F(Start, MissingSettingsAreNamedAndEndTheProgram) {
  app = std::make_unique<App>(L"C:\\no such shop.ini");
  ASSERT_TRUE(app->WaitFor([this] { return app->Box() != nullptr; }));
  EXPECT_NE(std::wstring::npos, app->BoxText().find(L"C:\\no such shop.ini"));
  app->AnswerBox(IDOK);
  ASSERT_TRUE(app->WaitForEnd());
  EXPECT_EQ(1u, app->ExitCode());
}

}  // namespace
}  // namespace storefront_test
