// The tarn-riskd executable: arguments, --summary, passwords, SIGTERM.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "riskd/passwords.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

struct ProcessResult {
  int status = -1;
  std::string out;
};

// Runs tarn-riskd with `args` and `input` on its standard input.
ProcessResult RunRiskd(const std::string& args, const std::string& input = "") {
  ProcessResult r;
  const std::string command =
      "printf '%s' '" + input + "' | " TARN_RISKD_EXE " " + args + " 2>/dev/null";
  FILE* p = popen(command.c_str(), "r");
  if (!p)
    return r;
  char buf[4096];
  size_t n;
  while ((n = fread(buf, 1, sizeof buf, p)) > 0)
    r.out.append(buf, n);
  r.status = pclose(p);
  return r;
}

TEST(RiskdMain, SummaryIsTheSameForTheSameSeed) {
  TempDir dir;
  const auto summary = [&](const char* db, const char* rows, const char* seed) {
    const std::string args = "--db " + (dir.path() / db).string() + " --rows " + rows + " --seed ";
    return RunRiskd(args + seed + " --summary");
  };
  const ProcessResult first = summary("a.db", "2500", "11");
  ASSERT_EQ(first.status, 0);
  EXPECT_EQ(first.out, summary("b.db", "2500", "11").out);
  EXPECT_EQ(first.out, summary("a.db", "99", "11").out) << "an existing store is not regenerated";
  EXPECT_NE(first.out, summary("c.db", "2500", "12").out);
  EXPECT_EQ(first.out.rfind("scrips 25\nclients 250\nusers 3\nholdings 2500\n", 0), 0u)
      << first.out;
  EXPECT_EQ(std::count(first.out.begin(), first.out.end(), '\n'), 6 + 10 + 10) << first.out;
}

TEST(RiskdMain, ExitStatusAndPasswordsFromStandardInput) {
  TempDir dir;
  const std::string setPassword = "--db " + dir.file("p.db") + " --rows 100 --set-password ";
  const struct {
    const char* name;
    std::string args;
    const char* input;
    int status;
  } cases[] = {
      {"noDb", "--summary", "", 2},
      {"listenWithoutPort", "--db x.db --listen 1.2.3.4", "", 2},
      {"rowsNotPositive", "--db x.db --summary --rows -5", "", 2},
      {"unknownOption", "--db x.db --bogus 1 --summary", "", 2},
      {"twoUses", "--db x.db --listen 127.0.0.1:0 --summary", "", 2},
      // A password is read from standard input, never taken from the command line.
      {"passwordAsArgument", "--db x.db --set-password RMS1 secret", "", 2},
      {"knownUser", setPassword + "RMS2", "same words\n", 0},
      {"lastLineWithoutEnd", setPassword + "RMS1", "same words", 0},
      {"unknownUser", setPassword + "NOBODY", "pass word\n", 1},
      {"emptyPassword", setPassword + "DEALER1", "\n", 1},
      {"nothingOnStandardInput", setPassword + "DEALER1", "", 1},
  };
  for (const auto& c : cases)
    EXPECT_EQ(RunRiskd(c.args, c.input).status, c.status << 8) << c.name;
  riskd::Db db;
  std::string error;
  ASSERT_TRUE(db.Open(dir.file("p.db"), &error)) << error;
  const std::string rms1 = riskd::PasswordHash(db, "RMS1"), rms2 = riskd::PasswordHash(db, "RMS2");
  EXPECT_TRUE(riskd::VerifyPassword(rms1, "same words"));
  EXPECT_TRUE(riskd::VerifyPassword(rms2, "same words"));
  EXPECT_FALSE(riskd::VerifyPassword(riskd::PasswordHash(db, "DEALER1"), ""));
  // Stored only as salted hashes: the same password differs for each user.
  EXPECT_EQ(rms1.rfind("$argon2id$", 0), 0u) << rms1;
  EXPECT_EQ(rms1.find("same"), std::string::npos);
  EXPECT_NE(rms1, rms2);
}

TEST(RiskdMain, ServesUntilSigterm) {
  TempDir dir;
  // The shell's process id is the server's once it execs.
  FILE* p = popen(("echo $$; exec " TARN_RISKD_EXE " --listen 127.0.0.1:0 --rows 2000 --db " +
                   dir.file("s.db") + " 2>&1")
                      .c_str(),
                  "r");
  ASSERT_TRUE(p);
  char line[512];
  const pid_t pid = fgets(line, sizeof line, p) ? std::atoi(line) : 0;
  ASSERT_GT(pid, 0);
  int port = 0;
  while (port == 0 && fgets(line, sizeof line, p))
    if (const char* at = std::strstr(line, "listening on 127.0.0.1:"))
      port = std::atoi(at + 23);
  ASSERT_GT(port, 0);
  {
    TestClient c(static_cast<uint16_t>(port));
    EXPECT_EQ(c.Ask(MakeRequest("om_get_user_peer_data", {{31003, "RMS1"}})).records.size(), 1u);
    kill(pid, SIGTERM);
    EXPECT_TRUE(c.WaitClosed());
  }
  EXPECT_EQ(pclose(p), 0);
}

} // namespace
} // namespace riskd_test
