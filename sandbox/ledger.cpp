#include "ledger.h"

#include <filesystem>

#include "files.h"
#include "server_limits.h"

namespace sandbox {
namespace {

constexpr std::int64_t schemaVersion = 1;

// AUTOINCREMENT keeps the last number apart from the rows, so that deleting them gives none of their numbers free.
constexpr const char* schema = R"(
  CREATE TABLE sales (
    number INTEGER PRIMARY KEY AUTOINCREMENT,
    time TEXT NOT NULL,
    merchant TEXT NOT NULL,
    card TEXT NOT NULL,
    totalCents INTEGER NOT NULL,
    taxCents INTEGER NOT NULL
  );
  CREATE TABLE saleLines (
    sale INTEGER NOT NULL REFERENCES sales (number),
    line INTEGER NOT NULL,
    sku TEXT NOT NULL,
    name TEXT NOT NULL,
    price TEXT NOT NULL,
    quantity INTEGER NOT NULL,
    PRIMARY KEY (sale, line)
  ) WITHOUT ROWID;
  CREATE TABLE refusals (
    number INTEGER PRIMARY KEY,
    time TEXT NOT NULL,
    code INTEGER NOT NULL,
    card TEXT NOT NULL,
    cents INTEGER NOT NULL
  );
  INSERT INTO sqlite_sequence (name, seq) VALUES ('sales', 100000);
  PRAGMA user_version = 1;
)";

std::string MadeWhenAbsent(const std::string& file) {
  if (!std::filesystem::exists(file)) WriteNewFile(file, "", 0600);
  return file;
}

std::int64_t Number(Database& database, const char* sql) {
  Statement statement(database, sql);
  return statement.Step() ? statement.Integer(0) : 0;
}

std::string Word(Database& database, const char* sql) {
  Statement statement(database, sql);
  return statement.Step() ? statement.Text(0) : "";
}

[[noreturn]] void Unusable(const std::string& file, const std::string& reason) {
  throw std::runtime_error(file + " cannot be used: " + reason +
                           ". Move it away, and the server makes a new one without its sales.");
}

Database Open(const std::string& file) {
  try {
    return Database(MadeWhenAbsent(file), lockMilliseconds);
  } catch (const DatabaseError& error) {
    Unusable(file, error.what());
  }
}

}  // namespace

Ledger::Ledger(const std::string& file, WallClock clock)
    : wallTime(std::move(clock)), database(Open(file)) {
  try {
    Prepare();
  } catch (const std::runtime_error& error) {
    Unusable(file, error.what());
  }
}

// Nothing is written before the file is known to be a ledger of this version, or empty.
void Ledger::Prepare() {
  const std::int64_t version = Number(database, "PRAGMA user_version");
  const bool empty = version == 0 && Number(database, "SELECT count(*) FROM sqlite_master") == 0;
  if (!empty && version != schemaVersion) {
    throw DatabaseError("it is of version " + std::to_string(version) + ", and this program keeps version " +
                        std::to_string(schemaVersion));
  }
  const std::string state = Word(database, "PRAGMA quick_check(1)");
  if (state != "ok") throw DatabaseError("it is damaged: " + state);

  if (Word(database, "PRAGMA journal_mode = WAL") != "wal") {
    throw DatabaseError("its file system cannot keep a write-ahead log");
  }
  database.Execute("PRAGMA synchronous = FULL; PRAGMA foreign_keys = ON");
  if (!empty) {
    Counts();  // fails when the tables are not there
    return;
  }
  Transaction transaction(database);
  if (Number(database, "PRAGMA user_version") == 0) database.Execute(schema);  // else another server was faster
  transaction.Commit();
}

std::int64_t Ledger::RecordSale(const Sale& sale) {
  Transaction transaction(database);
  Statement insertSale(database,
                       "INSERT INTO sales (time, merchant, card, totalCents, taxCents) VALUES (?, ?, ?, ?, ?) "
                       "RETURNING number");
  insertSale.Bind(TimeText(wallTime())).Bind(sale.merchant).Bind(sale.card).Bind(sale.total).Bind(sale.tax);
  if (!insertSale.Step()) throw DatabaseError("it gave no number to a sale");
  const std::int64_t number = insertSale.Integer(0);
  insertSale.Run();

  Statement insertLine(database,
                       "INSERT INTO saleLines (sale, line, sku, name, price, quantity) VALUES (?, ?, ?, ?, ?, ?)");
  std::int64_t line = 0;
  for (const SoldProduct& one : sale.products) {
    insertLine.Bind(number).Bind(++line).Bind(one.sku).Bind(one.name).Bind(one.price).Bind(one.quantity).Run();
  }
  transaction.Commit();
  return number;
}

void Ledger::RecordRefusal(int code, std::string_view card, Cents amount) {
  Statement insert(database, "INSERT INTO refusals (time, code, card, cents) VALUES (?, ?, ?, ?)");
  insert.Bind(TimeText(wallTime())).Bind(std::int64_t{code}).Bind(card).Bind(amount).Run();
}

std::optional<Sale> Ledger::ReadBill(std::int64_t number) {
  Statement find(database, "SELECT merchant, card, totalCents, taxCents FROM sales WHERE number = ?");
  if (!find.Bind(number).Step()) return std::nullopt;
  Sale sale;
  sale.number = number;
  sale.merchant = find.Text(0);
  sale.card = find.Text(1);
  sale.total = find.Integer(2);
  sale.tax = find.Integer(3);
  Statement lines(database, "SELECT sku, name, price, quantity FROM saleLines WHERE sale = ? ORDER BY line");
  lines.Bind(number);
  while (lines.Step()) sale.products.push_back({lines.Text(0), lines.Text(1), lines.Text(2), lines.Integer(3)});
  bills++;
  return sale;
}

LedgerCounts Ledger::Counts() {
  const auto sales = static_cast<std::uint64_t>(Number(database, "SELECT count(*) FROM sales"));
  const auto refusals = static_cast<std::uint64_t>(Number(database, "SELECT count(*) FROM refusals"));
  return {sales, refusals, bills};
}

void Ledger::Reset() {
  Transaction transaction(database);
  database.Execute("DELETE FROM saleLines; DELETE FROM sales; DELETE FROM refusals");
  transaction.Commit();
  bills = 0;
}

}  // namespace sandbox
