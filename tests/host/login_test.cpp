// The host's control logs in at every connection: with no password on a
// loopback back-end, with the password source's answer under --auth.
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "host/backend_control.h"
#include "host/password_file.h"
#include "tests/host/riskd_start.h"

namespace {

TEST(HostLogin, PasswordOnlyWhenTheBackEndWantsOne) {
  const struct {
    const char* name;
    bool auth;
    const char* user;
    std::optional<std::string> password; // what the source gives
    bool connects;
    int asked; // times the source is asked
    const char* failure;
  } cases[] = {
      // A user the back-end does not know is tarntrader's "unknownUser" run.
      {"embeddedDefaultNoPrompt", false, "", std::nullopt, true, 0, ""},
      {"namedUserNoPrompt", false, "RMS2", std::nullopt, true, 0, ""},
      {"rightPassword", true, "RMS2", host_test::kRms2Password, true, 1, ""},
      {"wrongPassword", true, "RMS2", "guess", false, 1, "the password is wrong"},
      {"noPasswordToGive", true, "RMS2", std::nullopt, false, 1, "wants a password"},
  };
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    auto server = host_test::StartRiskd(dir.path(), 1000, c.auth);
    ASSERT_TRUE(server);
    host::BackendControl control;
    int asked = 0;
    control.SetLogin(c.user, [&] {
      ++asked;
      return c.password;
    });
    QSignalSpy failed(&control, &host::BackendControl::loginFailed);
    control.Start("127.0.0.1", server->port());
    const bool settled =
        QTest::qWaitFor([&] { return control.IsConnected() != 0 || !failed.isEmpty(); }, 10000);
    ASSERT_TRUE(settled);
    EXPECT_EQ(control.IsConnected() != 0, c.connects);
    EXPECT_EQ(asked, c.asked);
    if (!c.connects) {
      ASSERT_EQ(failed.size(), 1);
      EXPECT_TRUE(failed[0][0].toString().contains(c.failure))
          << failed[0][0].toString().toStdString();
    }
    control.Stop();
  }
}

TEST(HostLogin, PasswordFileGivesItsFirstLine) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const struct {
    const char* name;
    const char* text;
    mode_t mode;
    std::optional<std::string> password;
    const char* error;
  } cases[] = {
      // Who may read the file is tarntrader's test; here is what is read.
      {"crlfLine", "s3cret\r\nsecond line\n", 0600, "s3cret", ""},
      {"emptyFirstLine", "\ns3cret\n", 0600, std::nullopt, "no password"},
      {"missing", nullptr, 0, std::nullopt, "missing: "},
  };
  for (const auto& c : cases) {
    const std::string path = (dir.path() + "/" + c.name).toStdString();
    if (c.text) {
      std::ofstream(path, std::ios::binary) << c.text;
      ASSERT_EQ(chmod(path.c_str(), c.mode), 0);
    }
    std::string error;
    EXPECT_EQ(host::ReadPasswordFile(path, &error), c.password) << c.name << ": " << error;
    EXPECT_NE(error.find(c.error), std::string::npos) << c.name << ": " << error;
  }
}

} // namespace
