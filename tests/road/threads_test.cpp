// Many threads of one host, each with its own objects, sell at a live server: does each get its own products, its own
// sale and its own bill, and is every sale made once?
#include <algorithm>
#include <future>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "road/sale_road.h"

namespace kest_road {
namespace {

constexpr int threadCount = 8;
constexpr int rounds = 3;
constexpr char catalogueGuid[] = "8E0F7A12-BFB3-4FE8-B9A5-48FD50A15A9A";

// The objects that one thread uses.
class Host {
 public:
  Host(kest_host::Library& loaded, int which) : library(loaded), quantity(static_cast<std::uint32_t>(which) + 1) {}
  ~Host() {
    library.KestDestroyProductList(list);
    library.KestDestroyCheckout(checkout);
  }

  void ExpectProducts() {
    ASSERT_EQ(1, library.KestGetProductList(list, "2.1"));
    std::string skus;
    while (KestFieldSet* product = library.KestNextProduct(list)) skus += Field(product, "SKU") + " ";
    EXPECT_EQ("1042 7 4294967295 ", skus);
  }

  // Buys as many jars as no other thread does; answers the transaction, empty when the sale failed.
  std::string Buy() {
    library.KestSetField(KEST_FIELDS(checkout), "KEST-CCard-Number", goodCard);
    library.KestClearOrder(checkout);
    library.KestAddOrderLine(checkout, 1042, quantity);
    KestPurchase* purchase = library.KestBillCustomer(checkout);
    EXPECT_NE(nullptr, purchase) << library.KestGetErrorCode(KEST_FIELDS(checkout));
    if (purchase == nullptr) return "";
    EXPECT_EQ(Total(), Field(KEST_FIELDS(purchase), "KEST-TotalAmount"));
    return Field(KEST_FIELDS(purchase), "KEST-TxN");
  }

  void ExpectBillOf(const std::string& transaction) {
    library.KestSetField(KEST_FIELDS(checkout), "KEST-TxN", transaction.c_str());
    KestBill* bill = library.KestGetBill(checkout);
    ASSERT_NE(nullptr, bill);
    ASSERT_EQ(1, library.KestGetBillProductCount(bill));
    EXPECT_EQ(std::to_string(quantity), Field(library.KestGetBillProduct(bill, 0), "Quantity"));
    EXPECT_EQ(Total(), Field(KEST_FIELDS(bill), "KEST-TotalAmount"));
  }

 private:
  std::string Field(KestFieldSet* set, const char* name) {
    const char* value = library.KestGetField(set, name);
    return value != nullptr ? value : "(absent)";
  }
  // 4.50 for one, and 10 % tax of all.
  std::string Total() const {
    const std::uint32_t cents = quantity * 495;
    return std::to_string(cents / 100) + "." + std::to_string(cents % 100 + 100).substr(1);
  }

  kest_host::Library& library;
  const std::uint32_t quantity;
  KestProductList* list = library.KestCreateProductList();
  KestCheckout* checkout = library.KestCreateCheckout();
};

// The transactions of `threadCount` threads that fetch, where the GUID is one of the catalogue's, buy and read their
// bills at once.
std::vector<std::string> SellTogether(kest_host::Library& library, bool fetches) {
  std::promise<void> gate;
  const std::shared_future<void> opened = gate.get_future().share();
  std::mutex mutex;
  std::vector<std::string> transactions;
  std::vector<std::thread> threads;
  for (int which = 0; which < threadCount; ++which) {
    threads.emplace_back([&, which] {
      Host host(library, which);
      opened.wait();
      for (int round = 0; round < rounds; ++round) {
        if (fetches) host.ExpectProducts();
        const std::string transaction = host.Buy();
        host.ExpectBillOf(transaction);
        const std::lock_guard<std::mutex> lock(mutex);
        transactions.push_back(transaction);
      }
    });
  }
  gate.set_value();
  for (std::thread& thread : threads) thread.join();
  return transactions;
}

void ExpectEachOnce(const std::vector<std::string>& transactions) {
  EXPECT_EQ(std::size_t{threadCount} * rounds, transactions.size());
  EXPECT_EQ(transactions.size(), std::set<std::string>(transactions.begin(), transactions.end()).size());
}

class ThreadsRoad : public SaleRoad {
 protected:
  static std::string ValueOf(const StoredReceipt& receipt, const char* name) {
    for (const StoredValue& value : receipt.values) {
      if (value.name == name) return value.data.c_str();
    }
    return "(absent)";
  }
};

TEST_F(ThreadsRoad, EachThreadGetsItsOwnProductsSaleAndBill) {
  library.KestSetApplicationGuid(catalogueGuid);
  ExpectEachOnce(SellTogether(library, true));
  EXPECT_EQ(std::uint64_t{threadCount} * rounds, admin.Sales());
}

// Two sales of one moment may take the same place, and then one receipt stands for both; none is of anything else.
TEST_F(ThreadsRoad, ReceiptsAreOfSalesThatWereMade) {
  const std::vector<std::string> transactions = SellTogether(library, false);
  const std::vector<StoredReceipt> receipts = ReceiptsOf(guid);
  ASSERT_FALSE(receipts.empty());
  EXPECT_LE(receipts.size(), transactions.size());
  for (const StoredReceipt& receipt : receipts) {
    const std::string transaction = ValueOf(receipt, "TXN");
    EXPECT_EQ(1, std::count(transactions.begin(), transactions.end(), transaction)) << transaction;
    EXPECT_EQ("Orchard Kitchen", ValueOf(receipt, "Merchant"));
  }
}

}  // namespace
}  // namespace kest_road
