// A headless tarntrader against a back-end run with --auth: the password
// comes from a file only its owner may read, and nothing starts without it.
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "tests/host/riskd_start.h"

namespace {

TEST(TarntraderAuth, HeadlessRunsReadThePasswordFromAPrivateFile) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  auto server = host_test::StartRiskd(dir.path(), 1000, true);
  ASSERT_TRUE(server);
  const struct {
    const char* name;
    const char* fileText; // nullptr: no --password-file
    mode_t mode;
    int exitCode;
    const char* outputPart; // on standard error or output
  } cases[] = {
      // Logged in and loaded: the query runs to its answer.
      {"rightPassword", "pa55word\n", 0600, 0, " rows"},
      {"wrongPassword", "guess\n", 0600, 1, "the password is wrong"},
      {"fileOthersMayRead", "pa55word\n", 0644, 1, "chmod 600"},
      {"noPasswordFile", nullptr, 0600, 1, "give --password-file"},
  };
  for (const auto& c : cases) {
    QStringList args{"--plugin",  VIEWHOLDINGS_PATH,
                     "--backend", QString("127.0.0.1:%1").arg(server->port()),
                     "--user",    "RMS2",
                     "--client",  "C000001",
                     "--wait-ms", "20000"};
    if (c.fileText) {
      const QString file = dir.filePath(QString(c.name) + ".pw");
      std::ofstream(file.toStdString()) << c.fileText;
      ASSERT_EQ(chmod(file.toLocal8Bit().constData(), c.mode), 0);
      args << "--password-file" << file;
    }
    QProcess p;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert("HOME", dir.path());
    p.setProcessEnvironment(env);
    p.start(TARNTRADER_PATH, args);
    ASSERT_TRUE(p.waitForFinished(60000)) << c.name;
    const QString err =
        QString::fromLocal8Bit(p.readAllStandardError() + p.readAllStandardOutput());
    EXPECT_EQ(p.exitCode(), c.exitCode) << c.name << "\n" << err.toStdString();
    EXPECT_TRUE(err.contains(c.outputPart)) << c.name << "\n" << err.toStdString();
  }
}

} // namespace
