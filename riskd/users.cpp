#include "riskd/users.h"

#include <sqlite3.h>

#include <algorithm>

namespace riskd {

bool User::HasRight(std::string_view name) const {
  return admin || std::find(rights.begin(), rights.end(), name) != rights.end();
}

std::optional<User> LoadUser(const Db& db, std::string_view id) {
  Stmt s = db.Prepare("SELECT id,type,peer,admin FROM user WHERE id=?", nullptr);
  if (!s.ok() || s.Bind(1, id).Step() != SQLITE_ROW)
    return std::nullopt;
  User user;
  user.id = s.Text(0);
  user.type = s.Int(1);
  user.peer = s.Text(2);
  user.admin = s.Int(3) != 0;
  Stmt r = db.Prepare("SELECT name FROM user_right WHERE user_id=? ORDER BY name", nullptr);
  r.Bind(1, id);
  int rc;
  while ((rc = r.Step()) == SQLITE_ROW)
    user.rights.emplace_back(r.Text(0));
  if (rc != SQLITE_DONE)
    return std::nullopt;
  return user;
}

std::optional<User> LoadDeskAdministrator(const Db& db) {
  Stmt s = db.Prepare("SELECT id FROM user WHERE admin<>0 ORDER BY id LIMIT 1", nullptr);
  if (!s.ok() || s.Step() != SQLITE_ROW)
    return std::nullopt;
  return LoadUser(db, s.Text(0));
}

std::string ClientVisibleSql(std::string_view clientColumn) {
  return "(:viewer_admin OR EXISTS(SELECT 1 FROM user_client uc WHERE uc.user_id=:viewer"
         " AND uc.client_id=" +
         std::string(clientColumn) + "))";
}

void BindViewer(Stmt& s, const User& viewer) {
  s.Bind(":viewer_admin", int64_t{viewer.admin}).Bind(":viewer", viewer.id);
}

bool MaySee(const Db& db, const User& user, std::string_view client) {
  Stmt s = db.Prepare("SELECT 1 FROM client c WHERE c.id=:client AND " + ClientVisibleSql("c.id"),
                      nullptr);
  BindViewer(s, user);
  return s.Bind(":client", client).Step() == SQLITE_ROW;
}

} // namespace riskd
