#include "riskd/sqlite.h"

#include <sqlite3.h>

#include <utility>

namespace riskd {

Db::~Db() {
  if (db_)
    sqlite3_close_v2(db_);
}

Db::Db(Db&& other) noexcept : db_(std::exchange(other.db_, nullptr)) {}

Db& Db::operator=(Db&& other) noexcept {
  if (this != &other) {
    if (db_)
      sqlite3_close_v2(db_);
    db_ = std::exchange(other.db_, nullptr);
  }
  return *this;
}

bool Db::Open(const std::string& path, std::string* error, Mode mode) {
  sqlite3* db = nullptr;
  const int flags =
      (mode == kReadOnly ? SQLITE_OPEN_READONLY : SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE) |
      SQLITE_OPEN_NOMUTEX;
  const int rc = sqlite3_open_v2(path.c_str(), &db, flags, nullptr);
  if (rc != SQLITE_OK) {
    if (error)
      *error = path + ": " + (db ? sqlite3_errmsg(db) : sqlite3_errstr(rc));
    sqlite3_close_v2(db);
    return false;
  }
  if (db_)
    sqlite3_close_v2(db_);
  db_ = db;
  sqlite3_busy_timeout(db_, 2000);
  return true;
}

bool Db::Exec(std::string_view sql, std::string* error) {
  char* message = nullptr;
  const std::string text(sql);
  if (sqlite3_exec(db_, text.c_str(), nullptr, nullptr, &message) == SQLITE_OK)
    return true;
  if (error)
    *error = message ? message : LastError();
  sqlite3_free(message);
  return false;
}

Stmt Db::Prepare(std::string_view sql, std::string* error) const {
  sqlite3_stmt* s = nullptr;
  if (sqlite3_prepare_v2(db_, sql.data(), static_cast<int>(sql.size()), &s, nullptr) != SQLITE_OK) {
    if (error)
      *error = LastError();
    sqlite3_finalize(s);
    return Stmt();
  }
  return Stmt(s);
}

int64_t Db::QueryInt(std::string_view sql, int64_t fallback) const {
  Stmt s = Prepare(sql, nullptr);
  if (!s.ok() || s.Step() != SQLITE_ROW || s.IsNull(0))
    return fallback;
  return s.Int(0);
}

int64_t Db::Changes() const {
  return sqlite3_changes64(db_);
}

std::string Db::LastError() const {
  return db_ ? sqlite3_errmsg(db_) : "database not open";
}

Stmt::~Stmt() {
  sqlite3_finalize(s_);
}

Stmt& Stmt::operator=(Stmt&& other) noexcept {
  if (this != &other) {
    sqlite3_finalize(s_);
    s_ = std::exchange(other.s_, nullptr);
    bindError_ = other.bindError_;
    skipPastLast_ = other.skipPastLast_;
  }
  return *this;
}

Stmt& Stmt::Checked(int rc) {
  if (rc != SQLITE_OK && bindError_ == SQLITE_OK)
    bindError_ = rc;
  return *this;
}

bool Stmt::Skipped(int index) const {
  return skipPastLast_ && index > sqlite3_bind_parameter_count(s_);
}

Stmt& Stmt::Bind(int index, std::string_view text) {
  if (!s_)
    return Checked(SQLITE_MISUSE);
  if (Skipped(index))
    return *this;
  return Checked(
      sqlite3_bind_text(s_, index, text.data(), static_cast<int>(text.size()), SQLITE_TRANSIENT));
}

Stmt& Stmt::Bind(int index, int64_t value) {
  if (!s_)
    return Checked(SQLITE_MISUSE);
  if (Skipped(index))
    return *this;
  return Checked(sqlite3_bind_int64(s_, index, value));
}

Stmt& Stmt::Bind(const char* name, std::string_view text) {
  return s_ ? Bind(sqlite3_bind_parameter_index(s_, name), text) : Checked(SQLITE_MISUSE);
}

Stmt& Stmt::Bind(const char* name, int64_t value) {
  return s_ ? Bind(sqlite3_bind_parameter_index(s_, name), value) : Checked(SQLITE_MISUSE);
}

Stmt& Stmt::BindNull(int index) {
  if (!s_)
    return Checked(SQLITE_MISUSE);
  if (Skipped(index))
    return *this;
  return Checked(sqlite3_bind_null(s_, index));
}

int Stmt::Step() {
  if (!s_)
    return SQLITE_MISUSE;
  if (bindError_ != SQLITE_OK)
    return bindError_;
  return sqlite3_step(s_);
}

bool Stmt::Run() {
  int rc;
  while ((rc = Step()) == SQLITE_ROW) {
  }
  const bool done = rc == SQLITE_DONE;
  Reset();
  return done;
}

void Stmt::Reset() {
  bindError_ = SQLITE_OK;
  if (!s_)
    return;
  // The last step's error is already reported by Step.
  (void)sqlite3_reset(s_);
  sqlite3_clear_bindings(s_);
}

bool Stmt::IsNull(int column) const {
  return !s_ || sqlite3_column_type(s_, column) == SQLITE_NULL;
}

int64_t Stmt::Int(int column) const {
  return s_ ? sqlite3_column_int64(s_, column) : 0;
}

std::string_view Stmt::Text(int column) const {
  if (!s_)
    return {};
  const auto* p = reinterpret_cast<const char*>(sqlite3_column_text(s_, column));
  if (!p)
    return {};
  return std::string_view(p, static_cast<size_t>(sqlite3_column_bytes(s_, column)));
}

Transaction::Transaction(Db& db) : db_(db) {
  open_ = db_.Exec("BEGIN IMMEDIATE", nullptr);
}

Transaction::~Transaction() {
  // A failed rollback leaves nothing to do: SQLite rolls back on close.
  if (open_)
    (void)db_.Exec("ROLLBACK", nullptr);
}

bool Transaction::Commit(std::string* error) {
  if (!open_)
    return false;
  open_ = false;
  if (db_.Exec("COMMIT", error))
    return true;
  (void)db_.Exec("ROLLBACK", nullptr);
  return false;
}

} // namespace riskd
