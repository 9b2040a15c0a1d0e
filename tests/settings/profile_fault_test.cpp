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

// Cut, NUL-holding and long-lined files are the disk-fault test's rows.
TEST_F(ProfileFault, AValueLongerThanAnyLineBufferReadsWhole) {
  const std::string longValue(10000, 'v');
  WriteFile(file, "[S]\nlong=" + longValue + "\nafter=1\n");
  EXPECT_EQ(Get("S", "long", file, 20000), longValue);
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
