// What does the ledger do when another program holds its file, when the disk is full and when the file may not be
// written?
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <optional>

#include "ledger.h"
#include "sandbox/process.h"
#include "sandbox/sqlite_system.h"

namespace sandboxtest {
namespace {

using sandbox::Database;
using sandbox::Ledger;
using sandbox::Sale;
using sandbox::Transaction;
using ::testing::HasSubstr;

Sale SomeSale() {
  Sale sale;
  sale.merchant = "Pen Shop";
  sale.card = "41**********1111";
  sale.total = 3450;
  sale.tax = 250;
  sale.products.assign(200, {"7", "Brush", "1.50", 3});
  return sale;
}

class LedgerSystem : public ::testing::Test {
 protected:
  // A file that another program has made a database of, and nothing more.
  void MakeEmptyDatabase() {
    std::ofstream(file).close();
    Database(file, 0).Execute("PRAGMA journal_mode = WAL");
  }

  SqliteSystem system;
  TemporaryFolder folder;
  const std::string file = folder / "sales.db";
};

TEST_F(LedgerSystem, SaleWaitsForAnotherProgramToGiveTheFileFree) {
  Ledger ledger(file);
  Database other(file, 0);
  std::optional<Transaction> held(std::in_place, other);
  int sleeps = 0;
  system.onSleep = [&](int) {
    if (++sleeps == 3) held.reset();
  };
  EXPECT_EQ(ledger.RecordSale(SomeSale()), 100001);
  EXPECT_EQ(sleeps, 3);
}

TEST_F(LedgerSystem, SaleWaitsOneSecondForAnotherProgramAndNoLonger) {
  Ledger ledger(file);
  Database other(file, 0);
  const Transaction held(other);
  int slept = 0;
  system.onSleep = [&](int microseconds) { slept += microseconds; };
  EXPECT_THROW(ledger.RecordSale(SomeSale()), sandbox::DatabaseError);
  EXPECT_EQ(slept, 1'000'000);
}

// Both found an empty file, and each waits for the other before it makes the tables.
TEST_F(LedgerSystem, TablesThatAnotherServerWasFasterToMakeAreTaken) {
  MakeEmptyDatabase();
  Database other(file, 0);
  std::optional<Transaction> held(std::in_place, other);
  std::unique_ptr<Ledger> faster;
  system.onSleep = [&](int) {
    if (faster) return;
    held.reset();
    faster = std::make_unique<Ledger>(file);
    EXPECT_EQ(faster->RecordSale(SomeSale()), 100001);
  };
  Ledger ledger(file);
  ASSERT_TRUE(faster);
  EXPECT_EQ(ledger.RecordSale(SomeSale()), 100002);
  EXPECT_EQ(faster->Counts().sales, 2u);
}

TEST_F(LedgerSystem, FileThatMayOnlyBeReadIsRefused) {
  { Ledger(file).RecordSale(SomeSale()); }
  system.opensFail = true;
  try {
    const Ledger ledger(file);
    FAIL() << "taken";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr(file + " cannot be used: it cannot be written"));
  }
}

// Fails each write of a sale in turn. The ledger never shows such a sale; whether the next opening finds it is open,
// but it finds it whole or not at all, and the numbers go on.
TEST_F(LedgerSystem, SaleForWhichThereIsNoSpaceIsNoSale) {
  int failures = 0;
  for (int writes = 0;; writes++) {
    const std::string own = folder / ("of-" + std::to_string(writes) + ".db");
    Ledger ledger(own);
    ledger.RecordSale(SomeSale());
    system.writesLeft = writes;
    try {
      ledger.RecordSale(SomeSale());
      system.writesLeft = -1;
      break;
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), HasSubstr("full"));
      failures++;
    }
    EXPECT_EQ(ledger.Counts().sales, 1u) << writes;
    EXPECT_FALSE(ledger.ReadBill(100002)) << writes;
    system.writesLeft = -1;
    const std::string killed = folder / "killed.db";
    std::filesystem::copy_file(own, killed, std::filesystem::copy_options::overwrite_existing);
    std::filesystem::copy_file(own + "-wal", killed + "-wal", std::filesystem::copy_options::overwrite_existing);
    const std::optional<Sale> found = Ledger(killed).ReadBill(100002);
    if (found) {
      EXPECT_EQ(found->products.size(), 200u) << writes;
    }

    const std::int64_t next = ledger.RecordSale(SomeSale());
    EXPECT_GT(next, 100001) << writes;
    EXPECT_EQ(ledger.ReadBill(next)->products.size(), 200u) << writes;
    EXPECT_EQ(ledger.Counts().sales, 2u) << writes;
  }
  EXPECT_GT(failures, 3);
}

}  // namespace
}  // namespace sandboxtest
