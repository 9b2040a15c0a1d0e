// Thin RAII over the SQLite C API: one owner per handle, errors as text.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace riskd {

class Stmt;

class Db {
public:
  Db() = default;
  ~Db();
  Db(const Db&) = delete;
  Db& operator=(const Db&) = delete;
  Db(Db&& other) noexcept;
  Db& operator=(Db&& other) noexcept;

  // Opens (creating) `path`; false with *error set on failure.
  bool Open(const std::string& path, std::string* error);
  // Runs one or more statements without results; false with *error on failure.
  bool Exec(std::string_view sql, std::string* error);
  // A prepared statement; an invalid one (ok() false) with *error on failure.
  Stmt Prepare(std::string_view sql, std::string* error) const;
  // The first column of the first row as an integer, or `fallback`.
  int64_t QueryInt(std::string_view sql, int64_t fallback = 0) const;
  int64_t Changes() const;
  std::string LastError() const;
  sqlite3* raw() const { return db_; }

private:
  sqlite3* db_ = nullptr;
};

class Stmt {
public:
  Stmt() = default;
  explicit Stmt(sqlite3_stmt* s) : s_(s) {}
  ~Stmt();
  Stmt(const Stmt&) = delete;
  Stmt& operator=(const Stmt&) = delete;
  Stmt(Stmt&& other) noexcept : s_(other.s_) { other.s_ = nullptr; }
  Stmt& operator=(Stmt&& other) noexcept;

  bool ok() const { return s_ != nullptr; }
  // Parameters are 1-based as in SQLite. Text is copied.
  Stmt& Bind(int index, std::string_view text);
  Stmt& Bind(int index, int64_t value);
  Stmt& BindNull(int index);
  // SQLITE_ROW, SQLITE_DONE or an error code.
  int Step();
  // Runs to completion; false when a step fails.
  bool Run();
  void Reset();

  bool IsNull(int column) const;
  int64_t Int(int column) const;
  std::string_view Text(int column) const; // empty for NULL
  sqlite3_stmt* raw() const { return s_; }

private:
  sqlite3_stmt* s_ = nullptr;
};

// BEGIN IMMEDIATE on construction; ROLLBACK on destruction unless Commit().
class Transaction {
public:
  explicit Transaction(Db& db);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  bool ok() const { return open_; }
  bool Commit(std::string* error);

private:
  Db& db_;
  bool open_ = false;
};

} // namespace riskd
