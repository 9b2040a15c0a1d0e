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
// Refused writes leave "[S]\nk=1\n" as it was.
TEST(ProfileWrite, SmallEdits) {
  const std::string start = "[S]\nk=1\n";
  const struct {
    const char* name;
    std::string before; // empty: no file
    const char* section;
    const char* key;
    const char* value;
    std::string after;
    int result = 1;
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
      {"keyless section: after its comment, before its blank", "[S]\n;c\n\n[T]\n", "S", "k", "v",
       "[S]\n;c\nk=v\r\n\n[T]\n"},
      {"comment key written as a comment line", "[S]\r\na=1\r\n;c=old\r\n", "S", ";c", "v",
       "[S]\r\na=1\r\n;c=v\r\n;c=old\r\n"},
      {"comment key deletion changes nothing", "[S]\n;c=v\n", "S", ";c", nullptr, "[S]\n;c=v\n"},
      {"key deletion in a missing file leaves it empty", "", "S", "k", nullptr, ""},
      {"section deletion in a missing file leaves it empty", "", "S", nullptr, nullptr, ""},
      {"break in value", start, "S", "k", "a\nb", start, 0},
      {"carriage return in key", start, "S", "k\rj", "v", start, 0},
      {"break in section", start, "S\n", "k", "v", start, 0},
      {"no section", start, nullptr, "k", "v", start, 0},
      {"bracket in section", start, "S]x", "k", "v", start, 0},
      {"tab around section", start, "S\t", "k", "v", start, 0},
      {"equals in key", start, "S", "k=j", "v", start, 0},
      {"key that reads as a header", start, "S", "[k", "v", start, 0},
      {"tab around key", start, "S", "\tk", "v", start, 0},
  };
  for (const auto& c : cases) {
    TempDir dir;
    const std::string file = dir.file("s.ini");
    if (!c.before.empty())
      WriteFile(file, c.before);
    EXPECT_EQ(Put(c.section, c.key, c.value, file), c.result) << c.name;
    EXPECT_TRUE(std::filesystem::exists(file)) << c.name;
    EXPECT_EQ(ReadFile(file), c.after) << c.name;
    if (c.key && c.key[0] == ';') {
      EXPECT_EQ(Get(c.section, c.key, file), "<default>") << c.name << ": a comment was read";
    }
  }
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", nullptr), 0);
}

} // namespace
