// Thin RAII over the SQLite C API: one owner per handle, errors as text.
// Every call that can fail says so in its result; a statement that failed to
// prepare, or whose parameter failed to bind, fails every step instead of
// running with a parameter missing.
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

  enum Mode { kReadWrite, kReadOnly };
  // Opens `path`, creating it when kReadWrite; false with *error set on
  // failure.
  [[nodiscard]] bool Open(const std::string& path, std::string* error, Mode mode = kReadWrite);
  // Runs one or more statements without results; false with *error on failure.
  [[nodiscard]] bool Exec(std::string_view sql, std::string* error);
  // A prepared statement; an invalid one (ok() false) with *error on failure.
  [[nodiscard]] Stmt Prepare(std::string_view sql, std::string* error) const;
  // The first column of the first row as an integer, or `fallback`.
  [[nodiscard]] int64_t QueryInt(std::string_view sql, int64_t fallback = 0) const;
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
  Stmt(Stmt&& other) noexcept
      : s_(other.s_), bindError_(other.bindError_), skipPastLast_(other.skipPastLast_) {
    other.s_ = nullptr;
  }
  Stmt& operator=(Stmt&& other) noexcept;

  bool ok() const { return s_ != nullptr; }
  // Parameters are 1-based as in SQLite, or named (":name"). Text is copied.
  // A bind that fails (no such parameter, no statement) makes the next
  // Step fail with its code, until Reset.
  Stmt& Bind(int index, std::string_view text);
  Stmt& Bind(int index, int64_t value);
  Stmt& Bind(const char* name, std::string_view text);
  Stmt& Bind(const char* name, int64_t value);
  Stmt& BindNull(int index);
  // SQLITE_ROW, SQLITE_DONE or an error code (SQLITE_MISUSE without a
  // statement).
  [[nodiscard]] int Step();
  // Runs to completion and resets; false when a step fails.
  [[nodiscard]] bool Run();
  // For statements that share one binder: binding a parameter number past
  // this statement's last is then skipped instead of failing.
  void SkipParametersPastTheLast() { skipPastLast_ = true; }
  // Rewinds the statement and clears its bindings and any bind failure.
  void Reset();

  bool IsNull(int column) const;
  int64_t Int(int column) const;
  std::string_view Text(int column) const; // empty for NULL
  sqlite3_stmt* raw() const { return s_; }

private:
  Stmt& Checked(int rc);
  bool Skipped(int index) const;

  sqlite3_stmt* s_ = nullptr;
  int bindError_ = 0; // SQLITE_OK
  bool skipPastLast_ = false;
};

// BEGIN IMMEDIATE on construction; ROLLBACK on destruction unless Commit().
class Transaction {
public:
  explicit Transaction(Db& db);
  ~Transaction();
  Transaction(const Transaction&) = delete;
  Transaction& operator=(const Transaction&) = delete;
  bool ok() const { return open_; }
  [[nodiscard]] bool Commit(std::string* error);

private:
  Db& db_;
  bool open_ = false;
};

} // namespace riskd
