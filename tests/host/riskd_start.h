// A tarn-riskd in this process on a free loopback port over a
// sample store of `holdings` holdings kept in `dir`. With `auth` every
// connection logs in, and RMS2's password is kRms2Password. nullptr, with the
// test failed, when it cannot start.
#pragma once

#include <QString>
#include <gtest/gtest.h>

#include <memory>

#include "riskd/passwords.h"
#include "riskd/server.h"
#include "riskd/sqlite.h"

namespace host_test {

inline constexpr const char* kRms2Password = "pa55word";

inline std::unique_ptr<riskd::RiskServer> StartRiskd(const QString& dir, int holdings,
                                                     bool auth = false) {
  riskd::RiskServerOptions o;
  o.store.dbPath = (dir + "/risk.db").toStdString();
  o.store.sample.holdings = holdings;
  o.auth = auth;
  o.log = [](const std::string&) {};
  std::string error;
  auto server = riskd::RiskServer::Start(o, &error);
  riskd::Db db;
  if (!server || (auth && !(db.Open(o.store.dbPath, &error) &&
                            riskd::SetPassword(db, "RMS2", kRms2Password, &error)))) {
    ADD_FAILURE() << error;
    return nullptr;
  }
  return server;
}

} // namespace host_test
