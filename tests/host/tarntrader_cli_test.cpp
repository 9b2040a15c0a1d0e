// The tarntrader executable as a user runs it: command line, embedded
// back-end, start-up load, headless exit codes, and the password of a
// back-end run with --auth read from a file only its owner may read. No
// display is needed.
#include <QProcess>
#include <QTcpServer>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "tests/host/riskd_start.h"

namespace {

TEST(TarntraderCli, ExitCodesAndMessages) {
  QTemporaryDir home;
  ASSERT_TRUE(home.isValid());
  const QString db = home.filePath("risk.db");
  const QStringList embedded{"--plugin", VIEWHOLDINGS_PATH, "--db", db, "--rows", "2000"};
  QTcpServer gone; // a port nothing listens on once it is closed
  gone.listen(QHostAddress::LocalHost, 0);
  const QString closed = QString("127.0.0.1:%1").arg(gone.serverPort());
  gone.close();
  QTemporaryDir authStore;
  auto authServer = host_test::StartRiskd(authStore.path(), 1000, true);
  ASSERT_TRUE(authServer);
  const QStringList withAuth{"--plugin",  VIEWHOLDINGS_PATH,
                             "--backend", QString("127.0.0.1:%1").arg(authServer->port()),
                             "--user",    "RMS2",
                             "--client",  "C000001",
                             "--wait-ms", "20000"};
  // A refused login (wrong password or unknown user: one answer) is the
  // unknownUser run's; here the file reaches the login, or its reader's
  // refusal reaches the user.
  const QString secret = home.filePath("rms2.pw"), readable = home.filePath("readable.pw");
  for (const auto& [file, mode] : {std::pair{secret, 0600}, {readable, 0644}}) {
    std::ofstream(file.toStdString()) << host_test::kRms2Password << "\n";
    ASSERT_EQ(chmod(file.toLocal8Bit().constData(), mode), 0);
  }
  const struct {
    const char* name;
    QStringList args;
    int exitCode;
    const char* outputPart; // on standard error or output
  } cases[] = {
      {"help", {"--help"}, 0, "--scrip"},
      {"unknownOption", {"--frobnicate"}, 1, "frobnicate"},
      // clang-format off
      {"missingPlugin", {"--plugin", "/nonexistent/libnothing.so", "--client", "C1"}, 1,
       "cannot load the plug-in"},
      {"unknownScrip", embedded + QStringList{"--scrip", "NSE:NOPE-EQ", "--wait-ms", "20000"}, 2,
       "unknown scrip NSE:NOPE-EQ"},
      {"clientNotVisible", embedded + QStringList{"--client", "NOBODY", "--wait-ms", "20000"}, 2,
       "client NOBODY is not one user RMS1 may query"},
      {"unknownUser", embedded + QStringList{"--user", "NOBODY", "--client", "C1"}, 1,
       "does not know user \"NOBODY\""},
      {"backEndNotThere",
       {"--plugin", VIEWHOLDINGS_PATH, "--backend", closed, "--client", "C1", "--wait-ms", "1500"},
       1, "cannot reach the back-end at 127.0.0.1:"},
      // Logged in and loaded: the query runs to its answer.
      {"passwordFromFile", withAuth + QStringList{"--password-file", secret}, 0, " rows"},
      {"fileOthersMayRead", withAuth + QStringList{"--password-file", readable}, 1, "chmod 600"},
      {"noPasswordFile", withAuth, 1, "give --password-file"},
      // clang-format on
  };
  QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
  env.remove("QT_QPA_PLATFORM"); // headless runs must choose offscreen themselves
  env.remove("DISPLAY");
  env.insert("HOME", home.path());
  env.insert("XDG_DATA_HOME", home.filePath("data"));
  for (const auto& c : cases) {
    QProcess p;
    p.setProcessEnvironment(env);
    p.setProcessChannelMode(QProcess::MergedChannels);
    p.start(TARNTRADER_PATH, c.args);
    EXPECT_TRUE(p.waitForFinished(60000)) << c.name << ": timed out";
    const QString text = QString::fromLocal8Bit(p.readAll());
    EXPECT_EQ(p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -2, c.exitCode)
        << c.name << "\n"
        << text.toStdString();
    EXPECT_TRUE(text.contains(c.outputPart)) << c.name << "\n" << text.toStdString();
  }
}

} // namespace
