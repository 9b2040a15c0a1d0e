#include "riskd/passwords.h"

#include <sodium.h>
#include <sqlite3.h>

#include "riskd/users.h"

namespace riskd {
namespace {

bool SodiumReady() {
  static const bool ready = sodium_init() >= 0;
  return ready;
}

} // namespace

bool SetPassword(Db& db, std::string_view userId, std::string_view password, std::string* error) {
  if (!LoadUser(db, userId)) {
    *error = "unknown user '" + std::string(userId) + "'";
    return false;
  }
  if (password.empty()) {
    *error = "empty password";
    return false;
  }
  char hash[crypto_pwhash_STRBYTES];
  if (!SodiumReady() ||
      crypto_pwhash_str(hash, password.data(), password.size(), crypto_pwhash_OPSLIMIT_INTERACTIVE,
                        crypto_pwhash_MEMLIMIT_INTERACTIVE) != 0) {
    *error = "cannot hash the password (out of memory?)";
    return false;
  }
  Stmt put = db.Prepare("INSERT INTO user_password(user_id,hash) VALUES(?1,?2)"
                        " ON CONFLICT DO UPDATE SET hash=?2",
                        error);
  if (!put.Bind(1, userId).Bind(2, std::string_view(hash)).Run()) {
    *error = db.LastError();
    return false;
  }
  return true;
}

std::string PasswordHash(const Db& db, std::string_view userId) {
  Stmt s = db.Prepare("SELECT hash FROM user_password WHERE user_id=?", nullptr);
  return s.Bind(1, userId).Step() == SQLITE_ROW ? std::string(s.Text(0)) : std::string();
}

bool VerifyPassword(const std::string& hash, std::string_view password) {
  return !hash.empty() && SodiumReady() &&
         crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

bool AnyPasswordSet(const Db& db) {
  return db.QueryInt("SELECT count(*) FROM user_password", 0) > 0;
}

} // namespace riskd
