// Does the program keep every sale that it answered, and no card number, whatever happens to it?
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <thread>

#include "database.h"
#include "sandbox/process.h"
#include "sandbox/test_client.h"

namespace sandboxtest {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;

constexpr const char* goodCard = "4111111111111111";

Fields OrderOf(const std::string& card, int quantity = 1) {
  return {{"KEST-CCard-Number", card}, {"KEST-Product", "SKU:7^Quantity:" + std::to_string(quantity)}};
}

std::string FileBytes(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

class Selling : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(Process({"init", shop}).Wait(), 0);
    Start();
  }

  void Start() {
    serve.emplace(std::vector<std::string>{"serve", shop, "--verbose"});
    const nlohmann::json ready = nlohmann::json::parse(serve->ReadLine());
    port = ready["port"];
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
  std::optional<Process> serve;
  std::uint16_t port = 0;
  std::string key;
};

// Sells from several clients at the same time until the server is gone, and writes down what was answered.
class Load {
 public:
  Load(int clientCount, const TestClient& model) {
    for (int i = 0; i < clientCount; i++) {
      threads.emplace_back([this, model, i] { SellUntilGone(model, i); });
    }
  }

  ~Load() { WaitForEnd(); }

  void WaitForAnswers(std::size_t count) {
    std::unique_lock<std::mutex> lock(mutex);
    answered.wait_for(lock, std::chrono::seconds(60), [&] { return answers.size() >= count || broken; });
  }

  /// Announces that the server will be gone: until then each call must be answered.
  void ExpectEnd() { ending = true; }

  void WaitForEnd() {
    for (std::thread& thread : threads) {
      if (thread.joinable()) thread.join();
    }
  }

  // Number of transaction and total of each answer; only whole when the threads have ended.
  std::vector<std::pair<std::string, std::string>> answers;
  std::atomic<bool> broken{false};

 private:
  void SellUntilGone(TestClient client, int seed) {
    for (int sale = 0;; sale++) {
      const std::optional<Fields> reply = client.Call("BillCustomer", OrderOf(goodCard, 1 + seed * 1000 + sale));
      if (!reply || Value(*reply, "KEST-Error") != "0") {
        if (!ending) broken = true;
        answered.notify_all();
        return;
      }
      const std::lock_guard<std::mutex> lock(mutex);
      answers.emplace_back(Value(*reply, "KEST-TxN"), Value(*reply, "KEST-TotalAmount"));
      answered.notify_all();
    }
  }

  std::mutex mutex;
  std::condition_variable answered;
  std::atomic<bool> ending{false};
  std::vector<std::thread> threads;
};

TEST_F(Selling, NothingAnsweredIsLostWhenTheProgramIsKilledUnderLoad) {
  constexpr std::size_t clients = 4;
  Load load(clients, Client());
  load.WaitForAnswers(60);
  load.ExpectEnd();
  serve->Signal(SIGKILL);
  load.WaitForEnd();
  EXPECT_EQ(serve->Wait(), 1000 + SIGKILL);
  EXPECT_FALSE(load.broken) << "a sale failed before the server was killed";
  ASSERT_GE(load.answers.size(), 60u);

  Start();
  std::map<std::string, std::string> found;
  for (const auto& [number, total] : load.answers) {
    EXPECT_TRUE(found.emplace(number, total).second) << number << " was given twice";
    const Fields bill = Client().Call("GetBill", {{"KEST-TxN", number}}).value_or(Fields());
    EXPECT_EQ(Value(bill, "KEST-Error"), "0") << number;
    EXPECT_EQ(Value(bill, "KEST-TxN"), number);
    EXPECT_EQ(Value(bill, "KEST-TotalAmount"), total) << number;
  }
  sandbox::Database database(shop + "/sales.db", 1000);
  sandbox::Statement count(database, "SELECT count(*) FROM sales");
  ASSERT_TRUE(count.Step());
  // What was recorded and not answered any more: one sale of each client at the most.
  EXPECT_LE(count.Integer(0), static_cast<std::int64_t>(load.answers.size() + clients));
  const Fields next = Client().Call("BillCustomer", OrderOf(goodCard)).value_or(Fields());
  EXPECT_EQ(Value(next, "KEST-Error"), "0");
  EXPECT_EQ(found.count(Value(next, "KEST-TxN")), 0u);
}

TEST_F(Selling, NoFileAndNoLogHoldsTheNumberOfACard) {
  const std::string cards[] = {goodCard, "378282246310005", "4000000000000002", "4242424242424241", "4242424242424242"};
  const char* const outcomes[] = {"0", "0", "1403", "1402", "1407"};
  for (std::size_t i = 0; i < std::size(cards); i++) {
    EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(cards[i])), outcomes[i]);
    ErrorCodeOf("GetBill", {{"KEST-TxN", cards[i]}});
    ErrorCodeOf("BillCustomer", {{"KEST-CCard-Number", cards[i]}, {"KEST-Product", "SKU:" + cards[i] + "^Quantity:1"}});
  }
  // While it runs the sales stand in the write-ahead log, afterwards in the database itself.
  for (const bool running : {true, false}) {
    if (!running) {
      serve->Signal(SIGTERM);
      ASSERT_EQ(serve->Wait(), 0);
    }
    std::string all = serve->Log();
    for (const auto& entry : std::filesystem::recursive_directory_iterator(shop)) all += FileBytes(entry.path());
    EXPECT_THAT(all, HasSubstr("41**********1111"));
    EXPECT_THAT(all, HasSubstr("40**********0002"));
    for (const std::string& card : cards) EXPECT_EQ(all.find(card), std::string::npos) << card;
  }
  EXPECT_THAT(serve->Log(), HasSubstr("transaction 100001"));
}

TEST_F(Selling, MemoryHoldsNoCardOfASaleThatWasMade) {
  const std::string spaced = "5555 5555-5555 4444";
  TestClient client = Client();
  ASSERT_TRUE(client.Handshake("BillCustomer"));
  EXPECT_EQ(client.Request("BillCustomer", OrderOf(spaced)).status, 200);
  EXPECT_FALSE(serve->HoldsInMemory(spaced));
  // Whoever takes freed memory back writes over its beginning.
  for (const char* half : {"55555555", "55554444", "5555 5555", "5555 4444"}) {
    EXPECT_FALSE(serve->HoldsInMemory(half)) << half;
  }
  EXPECT_TRUE(serve->HoldsInMemory("55**********4444")) << "the sale was not made, or the search itself fails";
}

TEST_F(Selling, DiskThatTakesNothingMoreFailsTheSaleAndNotTheServer) {
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  LimitFiles(1);
  TestClient client = Client();
  ASSERT_TRUE(client.Handshake("BillCustomer"));
  EXPECT_EQ(client.Request("BillCustomer", OrderOf(goodCard)).status, 500);
  EXPECT_EQ(ErrorCodeOf("GetBill", {{"KEST-TxN", "100001"}}), "0");
  LimitFiles(RLIM_INFINITY);
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  std::size_t errors = 0;
  for (std::size_t at = serve->Log().find(" error "); at != std::string::npos;
       at = serve->Log().find(" error ", at + 1)) {
    errors++;
  }
  EXPECT_EQ(errors, 1u) << serve->Log();
}

TEST_F(Selling, SampleCatalogueSellsWithMerchantAndTax) {
  const Fields reply = Client().Call("BillCustomer", OrderOf(goodCard, 2)).value_or(Fields());
  EXPECT_EQ(Value(reply, "KEST-TotalAmount"), "10.72");  // 9.90 and 8.25 % of it: 0.81675
  EXPECT_EQ(Value(reply, "KEST-TaxAmount"), "0.82");
  EXPECT_EQ(Value(reply, "KEST-Merchant"), "Lantern Workshop");
  EXPECT_EQ(Value(reply, "KEST-Product"), "SKU:7^Name:Brush collection^Price:4.95^Quantity:2");
}

TEST_F(Selling, StopLeavesTheSalesInOneFile) {
  EXPECT_EQ(ErrorCodeOf("BillCustomer", OrderOf(goodCard)), "0");
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  EXPECT_TRUE(std::filesystem::exists(shop + "/sales.db"));
  EXPECT_FALSE(std::filesystem::exists(shop + "/sales.db-wal"));
  EXPECT_FALSE(std::filesystem::exists(shop + "/sales.db-shm"));
}

TEST_F(Selling, DatabaseOfAnotherVersionIsToldInWords) {
  serve->Signal(SIGTERM);
  ASSERT_EQ(serve->Wait(), 0);
  sandbox::Database(shop + "/sales.db", 0).Execute("PRAGMA user_version = 7");
  Process again({"serve", shop});
  EXPECT_EQ(again.Wait(), 1);
  EXPECT_EQ(again.Output(), "");
  EXPECT_THAT(again.Log(), HasSubstr("kest-sandbox: " + shop + "/sales.db cannot be used: it is of version 7"));
  EXPECT_THAT(again.Log(), Not(HasSubstr("terminate")));
}

}  // namespace
}  // namespace sandboxtest
