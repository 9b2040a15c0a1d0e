// The tarn-riskd executable: arguments, --summary, passwords, SIGTERM.
#include <gtest/gtest.h>

#include <signal.h>

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "riskd/passwords.h"
#include "riskd/store.h"
#include "tests/riskd/riskd_fixture.h"

namespace riskd_test {
namespace {

// What tarn-riskd run with `args` (redirections included) and `input` on
// its standard input writes to its standard output; its exit code in *code.
std::string RunRiskd(const std::string& args, const std::string& input = "", int* code = nullptr) {
  FILE* p = popen(("printf '%s' '" + input + "' | " TARN_RISKD_EXE " " + args).c_str(), "r");
  std::string out;
  char buf[4096];
  for (size_t n; p && (n = fread(buf, 1, sizeof buf, p)) > 0;)
    out.append(buf, n);
  const int status = p ? pclose(p) : -1;
  if (code)
    *code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return out;
}

TEST(RiskdMain, SummaryIsTheSameForTheSameSeed) {
  TempDir dir;
  const auto summary = [&](const char* db, const char* rows, const char* seed) {
    return RunRiskd("--db " + dir.file(db) + " --rows " + rows + " --seed " + seed +
                    " --summary 2>/dev/null");
  };
  const std::string first = summary("a.db", "2500", "11");
  EXPECT_EQ(first, summary("b.db", "2500", "11"));
  EXPECT_EQ(first, summary("a.db", "99", "11")) << "an existing store is not regenerated";
  EXPECT_NE(first, summary("c.db", "2500", "12"));
  EXPECT_EQ(first.rfind("scrips 25\nclients 250\nusers 3\nholdings 2500\n", 0), 0u) << first;
  EXPECT_EQ(std::count(first.begin(), first.end(), '\n'), 6 + 10 + 10) << first;
}

TEST(RiskdMain, ExitCodesPasswordsAndImports) {
  TempDir dir;
  const std::string db = "--db " + dir.file("p.db") + " --rows 100 ";
  // Folders to import: one with a bad line, one that fails on its last
  // file, and one that is not there.
  const std::string good = dir.file("good"), bad = dir.file("bad"), none = dir.file("none");
  for (const std::string& folder : {good, bad}) {
    std::filesystem::create_directories(folder);
    vh::test::WriteFile(folder + "/scrips.csv", "isin,name,close,lot_size,nse_symbol,nse_series,"
                                                "nse_token,bse_code,bse_symbol,bse_group\n"
                                                "INE000A01011,ALPHA,1,1,ALPHA,EQ,1,,,\nx\n");
  }
  vh::test::WriteFile(bad + "/lien.csv", "client,segment\n");
  // A store as it was before passwords, one newer than this build, and a file
  // that is no database.
  for (int version : {1, riskd::kSchemaVersion + 1}) {
    riskd::Db db;
    std::string error;
    ASSERT_TRUE(riskd::OpenStore(dir.file(version == 1 ? "old.db" : "new.db"), &db, &error));
    ASSERT_TRUE(db.Exec(
        "INSERT INTO client VALUES('C1','x'); PRAGMA user_version=" + std::to_string(version) +
            (version == 1 ? "; DROP TABLE user_password" : ""),
        &error))
        << error;
  }
  vh::test::WriteFile(dir.file("junk.db"),
                      "this is not a database, just text that is long enough\n");
  const struct {
    const char* name;
    std::string args;
    const char* input;
    int code;
    const char* says; // on standard error
  } cases[] = {
      {"noDb", "--summary", "", 2, "--db FILE is required"},
      {"listenWithoutPort", "--db x.db --listen 1.2.3.4", "", 2, "--listen takes HOST:PORT"},
      {"rowsNotPositive", "--db x.db --summary --rows -5", "", 2, "--rows takes a positive"},
      {"unknownOption", "--db x.db --bogus 1 --summary", "", 2, "unknown option --bogus"},
      {"twoUses", "--db x.db --listen 127.0.0.1:0 --summary", "", 2, "give one of"},
      // A password is read from standard input, never taken from the command line.
      {"passwordAsArgument", "--db x.db --set-password RMS1 secret", "", 2, "secret needs a"},
      {"knownUser", db + "--set-password RMS2", "same words\n", 0, "password of RMS2 set"},
      {"lastLineWithoutEnd", db + "--set-password RMS1", "same words", 0, "of RMS1 set"},
      {"unknownUser", db + "--set-password NOBODY", "pass word\n", 1, "unknown user 'NOBODY'"},
      {"emptyPassword", db + "--set-password DEALER1", "\n", 1, "empty password"},
      {"nothingOnStandardInput", db + "--set-password DEALER1", "", 1, "no password given"},
      {"importWithProblems", "--db " + dir.file("i.db") + " --summary --import " + good, "", 0,
       "import: skipped scrips.csv:3: 1 columns"},
      {"importNothingKnown", "--db " + dir.file("j.db") + " --summary --import " + none, "", 1,
       "no known CSV file"},
      {"importBadHeader", "--db " + dir.file("k.db") + " --summary --import " + bad, "", 1,
       "lien.csv:1: header must be"},
      {"olderStore", "--db " + dir.file("old.db") + " --rows 100 --summary", "", 0, "scrips 20"},
      {"newerStore", "--db " + dir.file("new.db") + " --summary", "", 1, "is newer than"},
      {"notADatabase", "--db " + dir.file("junk.db") + " --summary", "", 1,
       "not a tarn-riskd database"},
      // Anyone who can reach it could name any user.
      {"anyAddressWithoutAuth", db + "--listen 0.0.0.0:0", "", 1, "listens on loopback only"},
  };
  for (const auto& c : cases) {
    int code = -1;
    EXPECT_NE(RunRiskd(c.args + " 2>&1", c.input, &code).find(c.says), std::string::npos) << c.name;
    EXPECT_EQ(code, c.code) << c.name;
  }
  riskd::Db store;
  std::string error;
  // Nothing of a failed import stays, not even the files before the one that failed.
  ASSERT_TRUE(store.Open(dir.file("k.db"), &error)) << error;
  EXPECT_EQ(store.QueryInt("SELECT count(*) FROM scrip", -1), 0);
  // The older store gained what it lacked and kept what it had.
  ASSERT_TRUE(store.Open(dir.file("old.db"), &error)) << error;
  EXPECT_EQ(store.QueryInt("PRAGMA user_version"), riskd::kSchemaVersion);
  EXPECT_EQ(store.QueryInt("SELECT count(*) FROM user_password", -1), 0);
  EXPECT_EQ(store.QueryInt("SELECT count(*) FROM client WHERE id='C1'"), 1);
  ASSERT_TRUE(store.Open(dir.file("p.db"), &error)) << error;
  const std::string rms1 = riskd::PasswordHash(store, "RMS1");
  const std::string rms2 = riskd::PasswordHash(store, "RMS2");
  EXPECT_TRUE(riskd::VerifyPassword(rms1, "same words"));
  EXPECT_TRUE(riskd::VerifyPassword(rms2, "same words"));
  EXPECT_FALSE(riskd::VerifyPassword(riskd::PasswordHash(store, "DEALER1"), ""));
  // Stored only as salted hashes: the same password differs for each user.
  EXPECT_EQ(rms1.rfind("$argon2id$", 0), 0u) << rms1;
  EXPECT_EQ(rms1.find("same"), std::string::npos);
  EXPECT_NE(rms1, rms2);
}

// Under --auth any address may be given; SIGTERM ends the server cleanly.
TEST(RiskdMain, ServesAnyAddressUnderAuthUntilSigterm) {
  TempDir dir;
  // The shell's process id is the server's once it execs.
  FILE* p = popen(("echo $$; exec " TARN_RISKD_EXE " --auth --listen 0.0.0.0:0 --rows 2000 --db " +
                   dir.file("s.db") + " 2>&1")
                      .c_str(),
                  "r");
  ASSERT_TRUE(p);
  char line[512];
  const pid_t pid = fgets(line, sizeof line, p) ? std::atoi(line) : 0;
  ASSERT_GT(pid, 0);
  int port = 0;
  while (port == 0 && fgets(line, sizeof line, p))
    if (const char* at = std::strstr(line, "listening on 0.0.0.0:"))
      port = std::atoi(at + 21);
  ASSERT_GT(port, 0);
  {
    TestClient c(static_cast<uint16_t>(port), nullptr);
    EXPECT_EQ(c.Ask(MakeRequest(vh::kLoginRequest, {{vh::kTagUserId, "RMS1"}})).status,
              vh::kPasswordNeeded);
    kill(pid, SIGTERM);
    EXPECT_TRUE(c.WaitClosed());
  }
  while (fgets(line, sizeof line, p)) // its last words, so that it exits rather than dies
    ;
  EXPECT_EQ(pclose(p), 0);
}

} // namespace
} // namespace riskd_test
