#include "database.h"

#include <sqlite3.h>

namespace sandbox {

void Database::Close::operator()(sqlite3* connection) const {
  sqlite3_close(connection);
}

Database::Database(const std::string& file, int lockMilliseconds) {
  sqlite3* opened = nullptr;
  const int result = sqlite3_open_v2(file.c_str(), &opened, SQLITE_OPEN_READWRITE, nullptr);
  handle.reset(opened);  // a connection that could not be opened has to be closed all the same
  if (result != SQLITE_OK) Fail();
  // A file that may not be written is opened for reading without a word.
  if (sqlite3_db_readonly(opened, "main") == 1) throw DatabaseError("it cannot be written");
  sqlite3_busy_timeout(opened, lockMilliseconds);
}

void Database::Execute(const char* sql) {
  if (sqlite3_exec(handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) Fail();
}

void Database::Fail() const {
  throw DatabaseError(handle ? sqlite3_errmsg(handle.get()) : "out of memory");
}

void Statement::Finalize::operator()(sqlite3_stmt* statement) const {
  sqlite3_finalize(statement);
}

Statement::Statement(Database& connection, const char* sql) : database(connection) {
  sqlite3_stmt* prepared = nullptr;
  if (sqlite3_prepare_v2(database.Handle(), sql, -1, &prepared, nullptr) != SQLITE_OK) database.Fail();
  handle.reset(prepared);
}

Statement& Statement::Bind(std::int64_t value) {
  if (sqlite3_bind_int64(handle.get(), ++bound, value) != SQLITE_OK) database.Fail();
  return *this;
}

Statement& Statement::Bind(std::string_view text) {
  const auto length = static_cast<sqlite3_uint64>(text.size());
  const char* bytes = text.empty() ? "" : text.data();  // a null pointer would be bound as NULL
  if (sqlite3_bind_text64(handle.get(), ++bound, bytes, length, SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK) {
    database.Fail();
  }
  return *this;
}

bool Statement::Step() {
  const int result = sqlite3_step(handle.get());
  if (result != SQLITE_ROW && result != SQLITE_DONE) database.Fail();
  return result == SQLITE_ROW;
}

void Statement::Run() {
  Step();
  sqlite3_reset(handle.get());
  bound = 0;
}

std::int64_t Statement::Integer(int column) const {
  return sqlite3_column_int64(handle.get(), column);
}

std::string Statement::Text(int column) const {
  const unsigned char* text = sqlite3_column_text(handle.get(), column);
  const int length = sqlite3_column_bytes(handle.get(), column);
  return text ? std::string(reinterpret_cast<const char*>(text), static_cast<std::size_t>(length)) : std::string();
}

Transaction::Transaction(Database& connection) : database(connection) {
  database.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
  // Some failures have rolled back already; there is nobody to tell of another one here.
  if (!committed) sqlite3_exec(database.Handle(), "ROLLBACK", nullptr, nullptr, nullptr);
}

void Transaction::Commit() {
  try {
    database.Execute("COMMIT");
  } catch (const DatabaseError& error) {
    throw CommitError(error.what());
  }
  committed = true;
}

}  // namespace sandbox
