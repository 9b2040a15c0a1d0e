// Writing values: where new lines go, what stays byte for byte, line breaks.
#include <string>

#include <gtest/gtest.h>

#include "settings/profile.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::Get;
using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WithCrlf;
using vh::test::WriteFile;

class ProfileWriteGolden : public ::testing::TestWithParam<bool> {};

// A sequence of edits over a file with comments, blank lines and a duplicate
// section; the result is compared byte for byte with the golden file.
TEST_P(ProfileWriteGolden, EditsLandWhereExpectedAndTheRestStays) {
  const auto adapt = [](const std::string& s) { return GetParam() ? WithCrlf(s) : s; };
  TempDir dir;
  const std::string file = dir.file("w.ini");
  WriteFile(file, adapt(vh::test::Fixture("write_base.ini")));

  EXPECT_EQ(profile::WritePrivateProfileStringA("a", "ONE", "uno", file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("A", "two", "2", file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("B", "k", "v", file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("C", "x", " spaced ", file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("New", "k", "v", file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("A", "one", nullptr, file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("B", nullptr, nullptr, file.c_str()), 1);

  EXPECT_EQ(ReadFile(file), adapt(vh::test::Fixture("write_base.golden")));
  // The key deleted from the first [A] is not found in the second one.
  EXPECT_EQ(Get("A", "one", file), "<default>");
  EXPECT_EQ(Get("C", "x", file), "spaced");
}

INSTANTIATE_TEST_SUITE_P(LineBreaks, ProfileWriteGolden, ::testing::Bool(),
                         [](const auto& info) { return info.param ? "Crlf" : "Lf"; });

TEST(ProfileWrite, SmallEdits) {
  const struct {
    const char* name;
    std::string before;
    const char* section;
    const char* key;
    const char* value;
    std::string after;
  } cases[] = {
      {"new key after a last line without break", "[S]\nk=1", "S", "n", "2", "[S]\nk=1\nn=2\n"},
      {"a CRLF cut after its CR is completed", "[S]\r\nk=1\r", "S", "n", "2",
       "[S]\r\nk=1\r\nn=2\r\n"},
      {"changed last line keeps having no break", "[S]\nk=1", "S", "k", "9", "[S]\nk=9"},
      {"new section after a last line without break", "[S]\r\nk=1", "T", "n", "2",
       "[S]\r\nk=1\r\n[T]\r\nn=2\r\n"},
      {"file without breaks takes the host's", "[S]", "S", "k", "v", "[S]\nk=v\n"},
      {"value written as given", "[S]\nk=1\n", "S", "k", "  'q'  ", "[S]\nk=  'q'  \n"},
      {"caller spaces dropped from names", "", "  S ", " k ", "v", "[S]\nk=v\n"},
      {"bare line gets a value", "[S]\nflag\n", "S", "flag", "1", "[S]\nflag=1\n"},
      {"first duplicate key changed", "[S]\nk=1\nk=2\n", "S", "K", "3", "[S]\nk=3\nk=2\n"},
      {"indented key loses its indent only", "[S]\n  k = 1 \n;c\n", "S", "k", "2",
       "[S]\nk=2\n;c\n"},
      {"section with only blanks", "[S]\n\n[T]\n", "S", "k", "v", "[S]\nk=v\n\n[T]\n"},
      {"keyless section: after its comment, before its blank", "[S]\n;c\n\n[T]\n", "S", "k", "v",
       "[S]\n;c\nk=v\n\n[T]\n"},
      {"key deleted", "[S]\na=1\nb=2\n", "S", "a", nullptr, "[S]\nb=2\n"},
      {"missing key deletion changes nothing", "[S]\na=1\n", "S", "z", nullptr, "[S]\na=1\n"},
      {"section deleted, comments stay", ";top\n[S]\na=1\n;mine\n[T]\nb=2\n", "s", nullptr, nullptr,
       ";top\n;mine\n[T]\nb=2\n"},
  };
  for (const auto& c : cases) {
    TempDir dir;
    const std::string file = dir.file("s.ini");
    WriteFile(file, c.before);
    EXPECT_EQ(profile::WritePrivateProfileStringA(c.section, c.key, c.value, file.c_str()), 1)
        << c.name;
    EXPECT_EQ(ReadFile(file), c.after) << c.name;
  }
}

TEST(ProfileWrite, CreatesMissingFilesOnlyWhenThereIsSomethingToWrite) {
  TempDir dir;
  const std::string file = dir.file("new.ini");
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", nullptr, file.c_str()), 1);
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", nullptr, nullptr, file.c_str()), 1);
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", file.c_str()), 1);
  EXPECT_EQ(ReadFile(file), "[S]\nk=v\n");
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", dir.file("no/such/dir.ini").c_str()),
            0);
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
      {"key that reads as a comment", "S", ";k", "v"},
      {"key that reads as a header", "S", "[k", "v"},
      {"tab around key", "S", "\tk", "v"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(profile::WritePrivateProfileStringA(c.section, c.key, c.value, file.c_str()), 0)
        << c.name;
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", nullptr), 0);
  EXPECT_EQ(ReadFile(file), "[S]\nk=1\n");
}

} // namespace
