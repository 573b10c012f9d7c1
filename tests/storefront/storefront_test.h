// The base of the storefront's tests: a folder with settings for the server beside the test, a place of its own for
// past sales, and the server's admin port. What the environment holds is set by scripts/with-sandbox and CMake.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "app.h"
#include "input.h"
#include "road/sandbox_admin.h"

namespace storefront_test {

struct TestCard {
  std::string number = "4111111111111111";
  std::string holder = "Ada Example";
  std::string expiry = "04/39";
  std::string code = "8351";
};

// The value of a field in a list of [name, value] as the admin port has them; "absent" when it is not there.
std::string ValueOf(const nlohmann::json& fields, const std::string& name);

class StorefrontTest : public ::testing::Test {
 protected:
  StorefrontTest();
  ~StorefrontTest() override;

  // Starts the program and waits until it shows the products; `port` 0 is the server's.
  void Open(unsigned port = 0);
  // Starts the program and waits for its window alone.
  void OpenWindow(unsigned port = 0);
  // Ends the program with Alt+F4, as a buyer does.
  void Close();

  void FillCard(const TestCard& card = {});
  // Chooses a row, fills the form and clicks Buy.
  void Order(int row, const std::string& quantity, const TestCard& card = {});
  bool WaitForMessage(const std::wstring& words) const;
  // Waits until the last order was paid and so many sales stand in the list.
  bool WaitForSales(std::size_t count) const;
  // What the server's admin port shows of the last billing; null when there was none.
  nlohmann::json LastBilling() const;
  unsigned RequestCount() const { return admin.Get("/state").at("requests").get<unsigned>(); }

  kest_road::SandboxAdmin admin;
  std::string folder;  // its own, with settings and what the program leaves under %APPDATA%
  std::unique_ptr<App> app;
};

}  // namespace storefront_test
