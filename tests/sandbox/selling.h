// The base of the tests that sell at the program itself, in a folder of its own.
#pragma once

#include <gtest/gtest.h>
#include <sys/resource.h>

#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "sandbox/process.h"
#include "sandbox/test_client.h"

namespace sandboxtest {

constexpr const char* goodCard = "4111111111111111";

inline Fields OrderOf(const std::string& card, int quantity = 1) {
  return {{"KEST-CCard-Number", card}, {"KEST-Product", "SKU:7^Quantity:" + std::to_string(quantity)}};
}

class Selling : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Process({"init", shop}).Wait(), 0);
    Start();
  }

  void Start() {
    std::vector<std::string> words = {"serve", shop};
    words.insert(words.end(), options.begin(), options.end());
    serve.emplace(words, before);
    const nlohmann::json ready = nlohmann::json::parse(serve->ReadLine());
    port = ready["port"];
    admin = ready.value("admin", 0);
    key = ready["key"];
  }

  TestClient Client() const { return TestClient(port, key); }

  std::string ErrorCodeOf(const std::string& service, const Fields& request) const {
    return Value(Client().Call(service, request).value_or(Fields()), "KEST-Error");
  }

  // Lets the program write no file beyond that many bytes.
  void LimitFiles(rlim_t bytes) {
    const rlimit limit = {bytes, RLIM_INFINITY};
    ASSERT_EQ(::prlimit(serve->Id(), RLIMIT_FSIZE, &limit, nullptr), 0);
  }

  TemporaryFolder folder;
  const std::string shop = folder / "shop";
  std::vector<std::string> options = {"--verbose"};
  std::string before;  // words of the shell that run before the program
  std::optional<Process> serve;
  std::uint16_t port = 0;
  std::uint16_t admin = 0;  // 0 when the options ask for none
  std::string key;
};

}  // namespace sandboxtest
