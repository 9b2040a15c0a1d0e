// Writing values: where new lines go, what stays byte for byte, line breaks.
#include <string>

#include <gtest/gtest.h>

#include "settings/profile.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::Get;
using vh::test::Put;
using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WithBreaks;
using vh::test::WriteFile;

// A sequence of edits over a file with comments, blank lines and a duplicate
// section; the result is compared byte for byte with the golden file.
TEST(ProfileWrite, EditsLandWhereExpectedAndTheRestStays) {
  TempDir dir;
  const std::string file = dir.file("w.ini");
  WriteFile(file, WithBreaks(vh::test::ReadFile(VH_SETTINGS_FIXTURES "/write_base.ini"), "\r\n"));

  EXPECT_EQ(Put("a", "ONE", "uno", file), 1);
  EXPECT_EQ(Put("A", "two", "2", file), 1);
  EXPECT_EQ(Put("B", "k", "v", file), 1);
  EXPECT_EQ(Put("C", "x", " spaced ", file), 1);
  EXPECT_EQ(Put("New", "k", "v", file), 1);
  EXPECT_EQ(Put("A", "one", nullptr, file), 1);
  EXPECT_EQ(Put("B", nullptr, nullptr, file), 1);

  EXPECT_EQ(ReadFile(file),
            WithBreaks(vh::test::ReadFile(VH_SETTINGS_FIXTURES "/write_base.golden"), "\r\n"));
  // The key deleted from the first [A] is not found in the second one.
  EXPECT_EQ(Get("A", "one", file), "<default>");
  EXPECT_EQ(Get("C", "x", file), "spaced");
}

// Every line written ends with CR LF, whatever the file's other lines use.
TEST(ProfileWrite, SmallEdits) {
  const struct {
    const char* name;
    std::string before;
    const char* section;
    const char* key;
    const char* value;
    std::string after;
  } cases[] = {
      {"new file", "", "S", "k", "v", "[S]\r\nk=v\r\n"},
      {"new key after a last line without break", "[S]\nk=1", "S", "n", "2", "[S]\nk=1\r\nn=2\r\n"},
      {"a final CR is a break already", "[S]\r\nk=1\r", "S", "n", "2", "[S]\r\nk=1\rn=2\r\n"},
      {"CR-only file: key found and replaced", "[S]\rk=1\rm=2\r", "S", "k", "9",
       "[S]\rk=9\r\nm=2\r"},
      {"replaced last line gets a break", "[S]\nk=1", "S", "k", "9", "[S]\nk=9\r\n"},
      {"new section after a last line without break", "[S]\r\nk=1", "T", "n", "2",
       "[S]\r\nk=1\r\n[T]\r\nn=2\r\n"},
      {"caller spaces dropped from names", "", "  S ", " k ", "v", "[S]\r\nk=v\r\n"},
      {"line without = is no key: a new one follows it", "[S]\nflag\n", "S", "flag", "1",
       "[S]\nflag\nflag=1\r\n"},
      {"first duplicate key changed", "[S]\nk=1\nk=2\n", "S", "K", "3", "[S]\nk=3\r\nk=2\n"},
      {"section with only blanks", "[S]\n\n[T]\n", "S", "k", "v", "[S]\nk=v\r\n\n[T]\n"},
      {"keyless section: after its comment, before its blank", "[S]\n;c\n\n[T]\n", "S", "k", "v",
       "[S]\n;c\nk=v\r\n\n[T]\n"},
      {"comment key written as a comment line", "[S]\r\na=1\r\n;c=old\r\n", "S", ";c", "v",
       "[S]\r\na=1\r\n;c=v\r\n;c=old\r\n"},
      {"comment key opens a missing section", "", "S", ";c", "v", "[S]\r\n;c=v\r\n"},
      {"comment key deletion changes nothing", "[S]\n;c=v\n", "S", ";c", nullptr, "[S]\n;c=v\n"},
      {"missing key deletion changes nothing", "[S]\na=1\n", "S", "z", nullptr, "[S]\na=1\n"},
  };
  for (const auto& c : cases) {
    TempDir dir;
    const std::string file = dir.file("s.ini");
    if (!c.before.empty())
      WriteFile(file, c.before);
    EXPECT_EQ(Put(c.section, c.key, c.value, file), 1) << c.name;
    EXPECT_EQ(ReadFile(file), c.after) << c.name;
    if (c.key && c.key[0] == ';') {
      EXPECT_EQ(Get(c.section, c.key, file), "<default>") << c.name << ": a comment was read";
    }
  }
}

TEST(ProfileWrite, DeletionsInAMissingFileLeaveAnEmptyOne) {
  TempDir dir;
  const std::string keyFile = dir.file("key.ini");
  const std::string sectionFile = dir.file("section.ini");
  EXPECT_EQ(Put("S", "k", nullptr, keyFile), 1);
  EXPECT_EQ(Put("S", nullptr, nullptr, sectionFile), 1);
  EXPECT_TRUE(std::filesystem::exists(keyFile) && ReadFile(keyFile).empty());
  EXPECT_TRUE(std::filesystem::exists(sectionFile) && ReadFile(sectionFile).empty());
  EXPECT_EQ(Put("S", "k", "v", dir.file("no/such/dir.ini")), 0);
}

TEST(ProfileWrite, RefusesWhatWouldSplitALineOrNeverBeFoundAgain) {
  TempDir dir;
  const std::string file = dir.file("s.ini");
  WriteFile(file, "[S]\nk=1\n");
  const struct {
    const char* name;
    const char* section;
    const char* key;
    const char* value;
  } cases[] = {
      {"break in value", "S", "k", "a\nb"},
      {"carriage return in value", "S", "k", "a\rb"},
      {"break in key", "S", "k\nj", "v"},
      {"break in section", "S\n", "k", "v"},
      {"no section", nullptr, "k", "v"},
      {"bracket in section", "S]x", "k", "v"},
      {"tab around section", "S\t", "k", "v"},
      {"equals in key", "S", "k=j", "v"},
      {"key that reads as a header", "S", "[k", "v"},
      {"tab around key", "S", "\tk", "v"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Put(c.section, c.key, c.value, file), 0) << c.name;
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", nullptr), 0);
  EXPECT_EQ(ReadFile(file), "[S]\nk=1\n");
}

} // namespace
