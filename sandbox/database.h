// SQLite as the ledger needs it: a connection, statements and transactions that give back what they hold. Every failure
// but that of a commit is a DatabaseError in words. The statements and transactions of a connection must go before it does, and one thread
// at a time may use a connection with all that belongs to it.
#pragma once

#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace sandbox {

/// Tells what SQLite could not do. The words hold no value that was bound to a statement.
class DatabaseError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Tells that a commit failed. What was to be committed may be there after the next opening all the same: its last frame
/// can have reached the file before the failure. It is no DatabaseError, because after those nothing has changed.
class CommitError : public std::runtime_error {
 public:
  explicit CommitError(const std::string& reason)
      : std::runtime_error("a commit failed, and it is unknown whether it is on the disk: " + reason) {}
};

class Database {
 public:
  /// Opens an existing file for reading and writing; an empty one is an empty database. An operation that finds the
  /// file locked by another program waits that many milliseconds before it fails.
  Database(const std::string& file, int lockMilliseconds);

  /// Runs statements that give no rows.
  void Execute(const char* sql);

  sqlite3* Handle() const { return handle.get(); }

  /// Throws what SQLite says about the last call that failed.
  [[noreturn]] void Fail() const;

 private:
  struct Close {
    void operator()(sqlite3* connection) const;
  };
  std::unique_ptr<sqlite3, Close> handle;
};

class Statement {
 public:
  Statement(Database& connection, const char* sql);

  /// Gives the next parameter its value, from the first one on. A text is copied.
  Statement& Bind(std::int64_t value);
  Statement& Bind(std::string_view text);

  /// Moves to the next row, and tells whether there is one.
  bool Step();

  /// Runs a statement that gives no rows, and makes it ready to be bound and run again.
  void Run();

  /// Return a column of the row, counted from 0; the text may hold any bytes.
  std::int64_t Integer(int column) const;
  std::string Text(int column) const;

 private:
  struct Finalize {
    void operator()(sqlite3_stmt* statement) const;
  };
  Database& database;
  std::unique_ptr<sqlite3_stmt, Finalize> handle;
  int bound = 0;
};

/// Takes the file's write lock at once. What was done is undone unless Commit was called; when Commit throws, it is
/// undone for this connection, and a later opening may still find it.
class Transaction {
 public:
  explicit Transaction(Database& connection);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;

  /// Throws CommitError.
  void Commit();

 private:
  Database& database;
  bool committed = false;
};

}  // namespace sandbox
