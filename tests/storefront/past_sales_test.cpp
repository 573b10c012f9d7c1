// What is left on the machine: the receipts are, the card is not.
#include <filesystem>
#include <fstream>

#include "storefront/storefront_test.h"
#include "storefront/stored_texts.h"

namespace storefront_test {
namespace {

class PastSales : public StorefrontTest {
 protected:
  std::string SalesFile() const { return folder + "\\Storefront\\B7C6E1D0-52F4-4D7E-9A63-0C1E5B3F7A21.sales"; }
  void Append(const std::string& text) { std::ofstream(SalesFile(), std::ios::binary | std::ios::app) << text; }
};

TEST_F(PastSales, ReceiptsAreThereAfterARestart) {
  Open();
  Order(1, "2");
  ASSERT_TRUE(WaitForSales(1));
  const std::string text = ValueOf(LastBilling().at("reply"), "KEST-TxN");
  const std::wstring number(text.begin(), text.end());
  Order(3, "1");
  ASSERT_TRUE(WaitForSales(2));
  const std::vector<Row> sales = app->PastSales();
  const std::wstring receipt = app->Text(IDC_RECEIPT);
  ASSERT_NO_FATAL_FAILURE(Close());
  ASSERT_NO_FATAL_FAILURE(Open());
  EXPECT_EQ(sales, app->PastSales());
  EXPECT_EQ(receipt, app->Text(IDC_RECEIPT));
  app->ClickRow(IDC_PAST, 1);
  EXPECT_TRUE(app->WaitFor([this] { return app->Shows(IDC_RECEIPT, L"2 x Lantern Professional"); }));
  EXPECT_TRUE(app->Shows(IDC_RECEIPT, L"Transaction:\t" + number));
}

TEST_F(PastSales, CutLineCostsNeitherTheSalesBeforeNorTheNextOne) {
  Open();
  Order(1, "1");
  ASSERT_TRUE(WaitForSales(1));
  ASSERT_NO_FATAL_FAILURE(Close());
  Append("S\t2\t2026-01-0");
  ASSERT_NO_FATAL_FAILURE(Open());
  EXPECT_EQ(1u, app->PastSales().size());
  // The next one has a single line too: it is killed before its answer comes.
  admin.AskFor({{{"kind", "delay"}, {"milliseconds", 60000}, {"service", "BillCustomer"}}});
  Order(0, "1");
  ASSERT_TRUE(app->WaitFor([this] { return admin.Sales() == 2; }));
  app.reset();
  ASSERT_NO_FATAL_FAILURE(OpenWindow());
  EXPECT_EQ(2u, app->PastSales().size());
}

TEST_F(PastSales, ListThatCannotBeReadSellsNothing) {
  // Another program holds it for itself while this one starts, and has gone when something is bought.
  std::filesystem::create_directories(std::filesystem::path(SalesFile()).parent_path());
  const HANDLE held = CreateFileA(SalesFile().c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
  ASSERT_NE(INVALID_HANDLE_VALUE, held);
  Open();
  CloseHandle(held);
  const unsigned before = RequestCount();
  Order(1, "1");
  EXPECT_TRUE(WaitForMessage(L"Your purchases cannot be written down"));
  EXPECT_EQ(before, RequestCount());
}

TEST_F(PastSales, ListThatCannotBeWrittenSellsNothing) {
  Open();
  // A folder in the file's place.
  std::filesystem::create_directories(SalesFile());
  const unsigned before = RequestCount();
  Order(1, "1");
  EXPECT_TRUE(WaitForMessage(L"Your purchases cannot be written down"));
  EXPECT_EQ(before, RequestCount());
}

TEST_F(PastSales, NoCardNumberAndNoCodeAreInFilesAndRegistry) {
  Open();
  TestCard declined;
  declined.number = "4000000000009995";
  declined.code = "6274";
  Order(1, "1", declined);
  ASSERT_TRUE(WaitForMessage(L"declined"));
  Order(1, "1");
  ASSERT_TRUE(WaitForMessage(L"Thank you"));
  ASSERT_NO_FATAL_FAILURE(Close());
  ASSERT_EQ(1u, FilesWith(folder, "Lantern Professional").size()) << "the search finds nothing at all";
  ASSERT_FALSE(KeysWith("Lantern Workshop").empty()) << "the library's receipt should be there";
  for (const TestCard& card : {TestCard(), declined}) {
    EXPECT_EQ(std::vector<std::string>(), FilesWith(folder, card.number));
    EXPECT_EQ(std::vector<std::string>(), KeysWith(card.number));
    EXPECT_EQ(std::vector<std::string>(), FilesWith(folder, card.holder));
    EXPECT_EQ(std::vector<std::string>(), FilesWith(SalesFile() + "\\..", card.code));
  }
}

TEST_F(PastSales, CardNumberThatTheServerSendsBackIsNotKept) {
  Open();
  admin.AskFor({{{"kind", "field"}, {"name", "KEST-Merchant"}, {"value", "Shop 4111-1111-1111-1111"},
                 {"service", "BillCustomer"}}});
  Order(1, "1");
  ASSERT_TRUE(WaitForMessage(L"Thank you"));
  EXPECT_FALSE(app->Shows(IDC_RECEIPT, L"4111-"));
  EXPECT_EQ(std::vector<std::string>(), FilesWith(folder, "4111-"));
}

}  // namespace
}  // namespace storefront_test
