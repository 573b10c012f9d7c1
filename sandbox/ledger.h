// Keeps the sales in one SQLite file. What it has recorded is on the disk before the call comes back, and outlives the
// end of the process at any moment. It owns the file while it lives; cards reach it masked. One thread at a time may
// use an object.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "database.h"
#include "sale.h"
#include "wall_time.h"

namespace sandbox {

struct LedgerCounts {
  std::uint64_t sales;     // made and not deleted
  std::uint64_t refusals;  // billings that their card refused
  std::uint64_t bills;     // read since start
};

struct RecordedSale {
  Sale sale;  // with its first lines
  std::string time;
  std::int64_t lines = 0;  // how many it has
};

struct RecordedRefusal {
  std::string time;
  std::int64_t code = 0;
  std::string card;  // masked; empty when it was none
  Cents amount = 0;
};

class Ledger {
 public:
  /// Opens the file, or makes it, for its owner alone. Throws std::runtime_error with the file and the reason in words
  /// when it is no ledger, one of another version, damaged, or cannot be written; such a file stays as it is. The clock
  /// dates what is recorded.
  explicit Ledger(const std::string& file, WallClock clock = std::chrono::system_clock::now);

  // All that follow throw DatabaseError, and have changed nothing then. RecordSale and Reset also throw CommitError: what
  // they were to do is not seen by this object then, and may be done all the same when the file is opened again.

  /// Records a sale, but for its number, and returns the number given to it: 100001 or more, and never one that was
  /// given before.
  std::int64_t RecordSale(const Sale& sale);

  /// Records that a card refused to pay an amount. The card is masked, or empty when it was none.
  void RecordRefusal(int code, std::string_view card, Cents amount);

  /// Reads a sale for a bill; nothing when there is none of that number.
  std::optional<Sale> ReadBill(std::int64_t number);

  LedgerCounts Counts();

  /// Returns that many sales at most, the newest first, and of each that many lines at most.
  std::vector<RecordedSale> LastSales(std::size_t most, std::size_t mostLines);

  /// Returns that many refusals at most, the newest first.
  std::vector<RecordedRefusal> LastRefusals(std::size_t most);

  /// Deletes all sales and refusals and counts bills from 0. Numbers go on from where they were.
  void Reset();

 private:
  void Prepare();

  WallClock wallTime;
  Database database;
  std::uint64_t bills = 0;
};

}  // namespace sandbox
