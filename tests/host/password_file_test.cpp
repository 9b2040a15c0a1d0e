// What a password file gives. Who may read it, and a login with its
// password, a wrong one or none, are tarntrader's runs against a back-end
// that wants one.
#include <QTemporaryDir>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <fstream>

#include "host/password_file.h"

namespace {

TEST(PasswordFile, GivesItsFirstLine) {
  QTemporaryDir dir;
  ASSERT_TRUE(dir.isValid());
  const struct {
    const char* name;
    const char* text;
    std::optional<std::string> password;
    const char* error;
  } cases[] = {
      {"crlfLine", "s3cret\r\nsecond line\n", "s3cret", ""},
      {"emptyFirstLine", "\ns3cret\n", std::nullopt, "no password"},
      {"missing", nullptr, std::nullopt, "missing: "},
  };
  for (const auto& c : cases) {
    const std::string path = (dir.path() + "/" + c.name).toStdString();
    if (c.text) {
      std::ofstream(path, std::ios::binary) << c.text;
      ASSERT_EQ(chmod(path.c_str(), 0600), 0);
    }
    std::string error;
    EXPECT_EQ(host::ReadPasswordFile(path, &error), c.password) << c.name << ": " << error;
    EXPECT_NE(error.find(c.error), std::string::npos) << c.name << ": " << error;
  }
}

} // namespace
