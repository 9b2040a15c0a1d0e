// Who asks: users, their rights and the clients each may see.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "riskd/sqlite.h"

namespace riskd {

// The action right that mark/unmark needs (administrators hold every right).
inline constexpr std::string_view kMarkRight = "RMS View Holdings: Mark/UnMark";

struct User {
  std::string id;
  int64_t type = 0;
  std::string peer;
  bool admin = false;
  std::vector<std::string> rights;

  bool HasRight(std::string_view name) const;
};

// The user `id`; nullopt when unknown or on a query failure.
std::optional<User> LoadUser(const Db& db, std::string_view id);

// The desk's administrator: the first user (by id) who is one; nullopt when
// the store has none. Hosts log in as this user when given no user id.
std::optional<User> LoadDeskAdministrator(const Db& db);

// The one rule of who sees which client, for every request: an
// administrator sees every client, anyone else the clients listed for them
// in user_client. Returns an SQL condition, true when the viewer may see the
// client id in `clientColumn`; bind its parameters with BindViewer.
std::string ClientVisibleSql(std::string_view clientColumn);
// Binds the viewer's parameters of ClientVisibleSql in `s`.
void BindViewer(Stmt& s, const User& viewer);

// True when `user` may see `client`, a known client; false also when the
// query fails.
bool MaySee(const Db& db, const User& user, std::string_view client);

} // namespace riskd
