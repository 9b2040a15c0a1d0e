// Files that are not what a settings file should be, and writes that fail.
#include <string>
#include <sys/stat.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "settings/profile.h"
#include "settings/profile_io.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::Get;
using vh::test::Put;
using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WriteFile;

struct ProfileFault : ::testing::Test {
  TempDir dir;
  const std::string file = dir.file("s.ini");
};

TEST_F(ProfileFault, UnopenableFilesReadAsMissingAndRefuseWrites) {
  if (::geteuid() != 0) { // root opens any file, so only others can test this way
    const std::string locked = dir.file("locked.ini");
    WriteFile(locked, "[S]\nk=1\n");
    ::chmod(locked.c_str(), 0);
    EXPECT_EQ(Get("S", "k", locked), "<default>");
    ::unlink(locked.c_str());
  }
  ASSERT_TRUE(std::filesystem::create_directory(file));
  EXPECT_EQ(Get("S", "k", file), "<default>");
  EXPECT_EQ(Put("S", "k", "v", file), 0);
  EXPECT_TRUE(std::filesystem::is_directory(file));
  std::filesystem::remove(file);
  ASSERT_EQ(::mkfifo(file.c_str(), 0644), 0); // would block a plain open
  EXPECT_EQ(Get("S", "k", file), "<default>");
  EXPECT_EQ(Put("S", "k", "v", file), 0);
  EXPECT_TRUE(std::filesystem::is_fifo(file));
  EXPECT_EQ(vh::test::CountOtherFiles(dir.path(), "s.ini"), 0);
  EXPECT_EQ(Put("S", "k", "v", dir.file("no/such/dir.ini")), 0);
}

// A replaced file keeps its mode; a read-only one is read but never replaced.
TEST_F(ProfileFault, ReplacementKeepsTheModeAndSparesReadOnlyFiles) {
  WriteFile(file, "[S]\nk=1\n");
  ASSERT_EQ(::chmod(file.c_str(), 0640), 0);
  ASSERT_EQ(Put("S", "k", "2", file), 1);
  struct stat st {};
  ASSERT_EQ(::stat(file.c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0640u);
  ASSERT_EQ(::chmod(file.c_str(), 0444), 0);
  EXPECT_EQ(Get("S", "k", file), "2");
  EXPECT_EQ(Put("S", "k", "3", file), 0);
  EXPECT_EQ(ReadFile(file), "[S]\nk=2\r\n");
}

TEST_F(ProfileFault, CutOddAndLongFilesGiveWhatIsThere) {
  const std::string nul("[S]\na=x\0y\nb=2\n", 14);
  const std::string longValue(10000, 'v');
  const std::string longLine = "[S]\nlong=" + longValue + "\nafter=1\n";
  const struct {
    const char* name;
    std::string text;
    const char *section, *key;
    std::string expected;
    uint32_t size = 256;
  } cases[] = {
      {"cut inside a key", "[S]\nk", "S", "k", "<default>"},
      {"cut inside a header", "[S]\nk=1\n[T", "T", "k", "<default>"},
      {"cut between CR and LF", "[S]\r\nk=1\r", "S", "k", "1"},
      {"NUL inside a value", nul, "S", "a", std::string("x\0y", 3)},
      {"line after a NUL", nul, "S", "b", "2"},
      {"long value whole in a large buffer", longLine, "S", "long", longValue, 20000},
      {"line after a long line", longLine, "S", "after", "1"},
  };
  for (const auto& c : cases) {
    WriteFile(file, c.text);
    EXPECT_EQ(Get(c.section, c.key, file, c.size), c.expected) << c.name;
  }
  // A NUL is an ordinary byte for the writer too.
  WriteFile(file, nul);
  ASSERT_EQ(Put("S", "c", "3", file), 1);
  EXPECT_EQ(ReadFile(file), nul + "c=3\r\n");
}

ssize_t OneByteAtATime(int fd, const void* data, size_t size) {
  return ::write(fd, data, size > 0 ? 1 : 0);
}

TEST_F(ProfileFault, ShortWritesAreContinued) {
  profile::detail::SetWriteFunctionForTesting(OneByteAtATime);
  const int written = Put("S", "k", "value", file);
  profile::detail::SetWriteFunctionForTesting(nullptr);
  ASSERT_EQ(written, 1);
  EXPECT_EQ(ReadFile(file), "[S]\r\nk=value\r\n");
}

} // namespace
