// Does the ledger keep what it has recorded, and refuse a file that it cannot keep sales in?
#include "ledger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <optional>

#include "sandbox/process.h"

namespace {
std::atomic<int> syncs{0};
std::atomic<bool> syncsFail{false};

int Synced(long call, int file) {
  syncs++;
  if (!syncsFail) return static_cast<int>(::syscall(call, file));
  errno = EIO;
  return -1;
}
}  // namespace

// Stand in for the system's in this program and in the libraries that it loads, so that a test sees when SQLite has
// waited for the disk, and can let that fail.
extern "C" __attribute__((visibility("default"))) int fdatasync(int file) {
  return Synced(SYS_fdatasync, file);
}

extern "C" __attribute__((visibility("default"))) int fsync(int file) {
  return Synced(SYS_fsync, file);
}

namespace sandboxtest {
namespace {

using sandbox::Ledger;
using sandbox::Sale;
using ::testing::HasSubstr;

Sale SomeSale() {
  Sale sale;
  sale.merchant = "Gr\xC3\xBC\xC3\x9F' Gott \"and\" Co.; DROP TABLE sales";
  sale.card = "41**********1111";
  sale.total = 3450;
  sale.tax = 250;
  sale.products = {{"7", "Brush: blue", "1.50", 3}, {"0042", "", "0.00", 1}, {"7", "Brush: blue", "1.50", 65535}};
  return sale;
}

class LedgerFile : public ::testing::Test {
 protected:
  TemporaryFolder folder;
  const std::string file = folder / "sales.db";

  // Returns one value as another program finds it in the file.
  std::string Found(const char* sql) {
    sandbox::Database database(file, 0);
    sandbox::Statement statement(database, sql);
    return statement.Step() ? statement.Text(0) : "(no row)";
  }

  void ExpectUnusable(const std::string& reason) {
    try {
      const Ledger ledger(file);
      FAIL() << "taken";
    } catch (const std::runtime_error& error) {
      EXPECT_THAT(error.what(), HasSubstr(file + " cannot be used: "));
      EXPECT_THAT(error.what(), HasSubstr(reason));
    }
  }

  std::string Bytes() {
    std::ifstream stream(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
  }
};

TEST_F(LedgerFile, IsMadeForItsOwnerAlone) {
  const Ledger ledger(file);
  EXPECT_EQ(std::filesystem::status(file).permissions(),
            std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(LedgerFile, HasItsVersionAndAWriteAheadLog) {
  const Ledger ledger(file);
  EXPECT_EQ(Found("PRAGMA user_version"), "1");
  EXPECT_EQ(Found("PRAGMA journal_mode"), "wal");
}

TEST_F(LedgerFile, GivesASaleBackAsItWasRecorded) {
  const Sale sale = SomeSale();
  const std::int64_t number = Ledger(file).RecordSale(sale);
  const std::optional<Sale> found = Ledger(file).ReadBill(number);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->number, number);
  EXPECT_EQ(found->merchant, sale.merchant);
  EXPECT_EQ(found->card, sale.card);
  EXPECT_EQ(found->total, sale.total);
  EXPECT_EQ(found->tax, sale.tax);
  ASSERT_EQ(found->products.size(), sale.products.size());
  for (std::size_t i = 0; i < sale.products.size(); i++) {
    EXPECT_EQ(found->products[i].sku, sale.products[i].sku);
    EXPECT_EQ(found->products[i].name, sale.products[i].name);
    EXPECT_EQ(found->products[i].price, sale.products[i].price);
    EXPECT_EQ(found->products[i].quantity, sale.products[i].quantity);
  }
}

TEST_F(LedgerFile, WaitsForTheDiskWithEachSale) {
  Ledger ledger(file);
  for (int i = 0; i < 3; i++) {
    const int before = syncs;
    ledger.RecordSale(SomeSale());
    EXPECT_GT(syncs, before);
  }
}

TEST_F(LedgerFile, NumbersBeginAt100001AndGoUpByOne) {
  Ledger ledger(file);
  EXPECT_EQ(ledger.RecordSale(SomeSale()), 100001);
  EXPECT_EQ(ledger.RecordSale(SomeSale()), 100002);
}

TEST_F(LedgerFile, NumbersGoOnAfterAReset) {
  Ledger ledger(file);
  ledger.RecordSale(SomeSale());
  const std::int64_t last = ledger.RecordSale(SomeSale());
  ledger.Reset();
  EXPECT_EQ(ledger.RecordSale(SomeSale()), last + 1);
}

TEST_F(LedgerFile, NumbersGoOnAfterAResetAndANewStart) {
  {
    Ledger ledger(file);
    ledger.RecordSale(SomeSale());
    ledger.Reset();
  }
  EXPECT_EQ(Ledger(file).RecordSale(SomeSale()), 100002);
}

TEST_F(LedgerFile, CountsSalesRefusalsAndBills) {
  Ledger ledger(file);
  const std::int64_t number = ledger.RecordSale(SomeSale());
  ledger.RecordRefusal(1403, "40**********0002", 100);
  ledger.RecordRefusal(1401, "", 100);
  for (int i = 0; i < 3; i++) ledger.ReadBill(number);
  ledger.ReadBill(number + 1);
  const sandbox::LedgerCounts counts = ledger.Counts();
  EXPECT_EQ(counts.sales, 1u);
  EXPECT_EQ(counts.refusals, 2u);
  EXPECT_EQ(counts.bills, 3u);
}

TEST_F(LedgerFile, HoldsNothingAfterAReset) {
  Ledger ledger(file);
  const std::int64_t number = ledger.RecordSale(SomeSale());
  ledger.RecordRefusal(1403, "40**********0002", 100);
  ledger.ReadBill(number);
  ledger.Reset();
  const sandbox::LedgerCounts counts = ledger.Counts();
  EXPECT_EQ(counts.sales + counts.refusals + counts.bills, 0u);
  EXPECT_FALSE(ledger.ReadBill(number));
  EXPECT_EQ(Found("SELECT count(*) FROM saleLines"), "0");
}

TEST_F(LedgerFile, DatesSalesAndRefusalsByTheClockInUtc) {
  Ledger ledger(file, [] { return std::chrono::system_clock::from_time_t(951782400); });
  ledger.RecordSale(SomeSale());
  ledger.RecordRefusal(1403, "", 1);
  EXPECT_EQ(Found("SELECT time FROM sales"), "2000-02-29T00:00:00Z");
  EXPECT_EQ(Found("SELECT time FROM refusals"), "2000-02-29T00:00:00Z");
}

TEST_F(LedgerFile, RecordsWhatARefusalWasAbout) {
  Ledger ledger(file);
  ledger.RecordRefusal(1404, "40**********9995", 3450);
  EXPECT_EQ(Found("SELECT code || ' ' || card || ' ' || cents FROM refusals"), "1404 40**********9995 3450");
}

// A sale that cannot be recorded whole must not be there in part, nor use up the answer that it was never given.
TEST_F(LedgerFile, SaleWhoseLinesFailLeavesNothingBehind) {
  Ledger ledger(file);
  sandbox::Database(file, 0).Execute(
      "CREATE TRIGGER broken BEFORE INSERT ON saleLines WHEN new.line = 2 BEGIN SELECT RAISE(FAIL, 'broken'); END");
  EXPECT_THROW(ledger.RecordSale(SomeSale()), sandbox::DatabaseError);
  EXPECT_EQ(ledger.Counts().sales, 0u);
  EXPECT_EQ(Found("SELECT count(*) FROM saleLines"), "0");
  sandbox::Database(file, 0).Execute("DROP TRIGGER broken");
  EXPECT_TRUE(ledger.ReadBill(ledger.RecordSale(SomeSale())));
}

TEST_F(LedgerFile, SaleFailsWhileAnotherProgramHoldsTheFileAndIsMadeAfterwards) {
  Ledger ledger(file);
  {
    sandbox::Database other(file, 0);
    const sandbox::Transaction held(other);
    EXPECT_THROW(ledger.RecordSale(SomeSale()), sandbox::DatabaseError);
  }
  EXPECT_EQ(ledger.RecordSale(SomeSale()), 100001);
}

// What a kill would leave then holds the sale, so it must not be told as one that was not made.
TEST_F(LedgerFile, SaleThatTheDiskDidNotConfirmIsOfUnknownOutcome) {
  Ledger ledger(file);
  ledger.RecordSale(SomeSale());
  syncsFail = true;
  EXPECT_THROW(ledger.RecordSale(SomeSale()), sandbox::CommitError);
  syncsFail = false;
  const std::string killed = folder / "killed.db";
  std::filesystem::copy_file(file, killed);
  std::filesystem::copy_file(file + "-wal", killed + "-wal");
  EXPECT_TRUE(Ledger(killed).ReadBill(100002));
  EXPECT_EQ(ledger.Counts().sales, 1u);
  EXPECT_TRUE(ledger.ReadBill(ledger.RecordSale(SomeSale())));
}

TEST_F(LedgerFile, ResetThatFailsHalfwayDeletesNothing) {
  Ledger ledger(file);
  const std::int64_t number = ledger.RecordSale(SomeSale());
  ledger.RecordRefusal(1403, "40**********0002", 100);
  ledger.ReadBill(number);
  sandbox::Database(file, 0).Execute(
      "CREATE TRIGGER broken BEFORE DELETE ON refusals BEGIN SELECT RAISE(FAIL, 'broken'); END");
  EXPECT_THROW(ledger.Reset(), sandbox::DatabaseError);
  const sandbox::LedgerCounts counts = ledger.Counts();
  EXPECT_EQ(counts.sales, 1u);
  EXPECT_EQ(counts.refusals, 1u);
  EXPECT_EQ(counts.bills, 1u);
  EXPECT_EQ(ledger.ReadBill(number)->products.size(), 3u);
}

TEST_F(LedgerFile, OfAnotherVersionIsRefusedAndLeftAsItIs) {
  { const Ledger ledger(file); }
  sandbox::Database(file, 0).Execute("PRAGMA user_version = 2");
  const std::string before = Bytes();
  ExpectUnusable("it is of version 2, and this program keeps version 1");
  EXPECT_EQ(Bytes(), before);
}

TEST_F(LedgerFile, OfAnotherProgramIsRefusedAndLeftAsItIs) {
  std::ofstream(file).close();
  sandbox::Database(file, 0).Execute("CREATE TABLE letters (text)");
  const std::string before = Bytes();
  ExpectUnusable("version 0");
  EXPECT_EQ(Bytes(), before);
}

TEST_F(LedgerFile, WithTheVersionButWithoutTheTablesIsRefused) {
  std::ofstream(file).close();
  sandbox::Database(file, 0).Execute("CREATE TABLE letters (text); PRAGMA user_version = 1");
  ExpectUnusable("no such table");
}

TEST_F(LedgerFile, ThatIsNoDatabaseIsRefusedAndLeftAsItIs) {
  const std::string text(4096, 'x');
  std::ofstream(file) << text;
  ExpectUnusable("not a database");
  EXPECT_EQ(Bytes(), text);
}

// The damage is in a page that nothing needs at start, and that a bill would stumble over later.
TEST_F(LedgerFile, ThatIsDamagedIsRefused) {
  {
    Ledger ledger(file);
    for (int i = 0; i < 100; i++) ledger.RecordSale(SomeSale());
  }
  const std::size_t page = std::stoul(Found("SELECT rootpage FROM sqlite_master WHERE name = 'saleLines'"));
  std::string bytes = Bytes();
  ASSERT_GE(bytes.size(), page * 4096);
  bytes.replace((page - 1) * 4096, 4096, std::string(4096, '\xA5'));
  std::ofstream(file, std::ios::binary) << bytes;
  ExpectUnusable("it is damaged");
}

TEST_F(LedgerFile, ThatIsAFolderIsRefused) {
  std::filesystem::create_directory(file);
  ExpectUnusable("unable to open");
}

// What is left when the process is killed between making the file and filling it.
TEST_F(LedgerFile, ThatIsEmptyIsTakenAsNew) {
  std::ofstream(file).close();
  EXPECT_EQ(Ledger(file).RecordSale(SomeSale()), 100001);
}

TEST_F(LedgerFile, WhereNoFileCanBeIsToldInWords) {
  try {
    const Ledger ledger(folder / "missing/sales.db");
    FAIL() << "taken";
  } catch (const std::runtime_error& error) {
    EXPECT_THAT(error.what(), HasSubstr("cannot make " + (folder / "missing/sales.db") + ": No such file"));
  }
}

}  // namespace
}  // namespace sandboxtest
