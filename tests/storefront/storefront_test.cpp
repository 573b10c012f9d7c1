#include "storefront/storefront_test.h"

#include <filesystem>
#include <fstream>

#include "road/road_test.h"

namespace storefront_test {
namespace {

std::string ServersPort() { return kest_road::Environment("KEST_PORT"); }

// No window manager runs on a virtual screen. Wine then has to give windows the focus, and their frames, by itself.
class OwnFrames : public ::testing::Environment {
 public:
  void SetUp() override {
    RegSetKeyValueA(HKEY_CURRENT_USER, (key + "\\X11 Driver").c_str(), "Managed", REG_SZ, "N", 2);
  }
  void TearDown() override { RegDeleteTreeA(HKEY_CURRENT_USER, key.c_str()); }

 private:
  const std::string key = "Software\\Wine\\AppDefaults\\storefront.exe";
};

const auto* const ownFrames = ::testing::AddGlobalTestEnvironment(new OwnFrames);

std::string NewFolder() {
  static int count = 0;
  const auto path = std::filesystem::temp_directory_path() /
                    ("storefront-" + std::to_string(GetCurrentProcessId()) + "-" + std::to_string(++count));
  std::filesystem::create_directories(path);
  return path.string();
}

void WriteSettings(const std::string& folder, const std::string& port) {
  std::ofstream file(folder + "\\shop.ini");
  file << "[Shop]\nTitle=Lantern Workshop\nSlogan=Software for small shops\nCurrency=$\n"
       << "[Server]\nHost=" << kest_road::Environment("KEST_SERVER") << "\nPort=" << port << "\n"
       << "[Application]\nGUID={B7C6E1D0-52F4-4D7E-9A63-0C1E5B3F7A21}\nVersion=1.0\nOrderField=X-Order\n"
       << "[CardFields]\nHolder=KEST-CCard-Holder\nExpiry=KEST-CCard-Expiry\nCode=KEST-CCard-Code\n";
  // The key's file has its usual name and lies beside the settings.
  std::ofstream(folder + "\\public.key") << kest_road::ReadFile(kest_road::Environment("KEST_KEY_FILE"));
}

}  // namespace

std::string ValueOf(const nlohmann::json& fields, const std::string& name) {
  for (const auto& field : fields) {
    if (field.at(0) == name) return field.at(1);
  }
  return "absent";
}

StorefrontTest::StorefrontTest() : folder(NewFolder()) {
  admin.Reset();
  SetEnvironmentVariableA("APPDATA", folder.c_str());
}

StorefrontTest::~StorefrontTest() {
  app.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void StorefrontTest::OpenWindow(unsigned port) {
  WriteSettings(folder, port == 0 ? ServersPort() : std::to_string(port));
  app = std::make_unique<App>(std::wstring(folder.begin(), folder.end()) + L"\\shop.ini");
  ASSERT_TRUE(app->WaitForWindow());
}

void StorefrontTest::Open(unsigned port) {
  ASSERT_NO_FATAL_FAILURE(OpenWindow(port));
  ASSERT_TRUE(WaitForMessage(L"Welcome")) << "the window says otherwise";
}

void StorefrontTest::Close() {
  PressKey(VK_F4, VK_MENU);
  ASSERT_TRUE(app->WaitForEnd());
  app.reset();
}

void StorefrontTest::FillCard(const TestCard& card) {
  app->Fill(IDC_NUMBER, card.number);
  app->Fill(IDC_HOLDER, card.holder);
  app->Fill(IDC_EXPIRY, card.expiry);
  app->Fill(IDC_CODE, card.code);
}

void StorefrontTest::Order(int row, const std::string& quantity, const TestCard& card) {
  app->ClickRow(IDC_PRODUCTS, row);
  app->Fill(IDC_QUANTITY, quantity);
  FillCard(card);
  app->Click(IDC_BUY);
}

bool StorefrontTest::WaitForMessage(const std::wstring& words) const {
  return app->WaitFor([this, &words] { return app->Shows(IDC_MESSAGE, words); });
}

bool StorefrontTest::WaitForSales(std::size_t count) const {
  return app->WaitFor([this, count] {
    if (!app->IsEnabled(IDC_BUY) || !app->Shows(IDC_MESSAGE, L"Thank you for your purchase")) return false;
    const std::vector<Row> sales = app->PastSales();
    return sales.size() == count && sales[0][4] == L"Paid";
  });
}

nlohmann::json StorefrontTest::LastBilling() const {
  const nlohmann::json record = admin.Get("/requests");
  nlohmann::json last;
  for (const auto& request : record.at("requests")) {
    if (request.at("path") == "/BillCustomer" && request.at("kind") == "request") last = request;
  }
  return last;
}

}  // namespace storefront_test
