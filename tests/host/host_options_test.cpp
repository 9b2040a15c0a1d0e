#include <gtest/gtest.h>

#include "host/host_options.h"

namespace {

struct Case {
  const char* name;
  QStringList args;
  bool ok;
  const char* errorPart; // for failures
};

TEST(HostOptions, AcceptsAndRejects) {
  const Case cases[] = {
      {"nothing", {}, true, ""},
      {"headlessScrip",
       {"--scrip", "NSE:ACME-EQ", "--snapshot", "v.png", "--wait-ms", "500"},
       true,
       ""},
      {"badPort", {"--backend", "127.0.0.1:99999"}, false, "HOST:PORT"},
      {"noPort", {"--backend", "localhost"}, false, "HOST:PORT"},
      {"badType", {"--user-type", "x"}, false, "--user-type"},
      {"clientAndScrip", {"--client", "C1", "--scrip", "NSE:A-EQ"}, false, "not both"},
      {"scripWithoutExchange", {"--scrip", "ACME-EQ"}, false, "NSE:SYMBOL-SERIES"},
      {"zeroWait", {"--client", "C1", "--wait-ms", "0"}, false, "--wait-ms"},
      {"negativeRows", {"--rows", "-5"}, false, "--rows"},
      {"stray", {"oops"}, false, "unexpected"},
  };
  for (const Case& c : cases) {
    host::HostOptions o;
    QString error;
    bool help = false;
    QStringList argv{"tarntrader"};
    argv += c.args;
    EXPECT_EQ(host::ParseHostOptions(argv, o, error, help), c.ok)
        << c.name << ": " << error.toStdString();
    if (!c.ok) {
      EXPECT_TRUE(error.contains(c.errorPart)) << c.name << ": " << error.toStdString();
    }
  }
}

// Where --backend, --custom and the rest land is what tarntrader's runs
// depend on; the rights list and who logs in are read here.
TEST(HostOptions, RightsAndTheAdministrator) {
  host::HostOptions o, admin;
  QString error;
  bool help = false;
  ASSERT_TRUE(host::ParseHostOptions({"t", "--user", "U7", "--user-type", "2", "--rights", "A,,B"},
                                     o, error, help));
  EXPECT_EQ(o.rights, (QStringList{"A", "B"}));
  EXPECT_TRUE(o.userTypeGiven && !o.administrator());
  // Without --user the desk's administrator logs in.
  ASSERT_TRUE(host::ParseHostOptions({"t"}, admin, error, help));
  EXPECT_TRUE(!admin.userTypeGiven && admin.administrator() && !admin.headless());
}

} // namespace
