// Reading values from a fixture that holds one line per reading rule, with
// each of the three line breaks a file may use.
#include <cstring>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "settings/profile.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::TempDir;

class ProfileRead : public ::testing::TestWithParam<const char*> {
protected:
  void SetUp() override {
    const std::string text = vh::test::ReadFile(VH_SETTINGS_FIXTURES "/read_rules.ini");
    ASSERT_FALSE(text.empty());
    vh::test::WriteFile(file_, vh::test::WithBreaks(text, GetParam()));
  }
  TempDir dir_;
  std::string file_ = dir_.file("read_rules.ini");
};

TEST_P(ProfileRead, ValuesFollowTheLineRules) {
  const struct {
    const char* name;
    const char* section;
    const char* key;
    const char* expected;
  } cases[] = {
      {"names ignore case", "GENERAL", "plain", "value"},
      {"caller spaces around names dropped", "  General ", " Plain  ", "value"},
      {"caller tab is part of the name", "\tGeneral", "Plain", "<default>"},
      {"blanks around key and value dropped", "General", "Spaced", "padded value"},
      {"tabs around value dropped", "General", "Tabbed", "tab value"},
      {"double quotes removed, inner blanks kept", "General", "DQuoted", " keep inner blanks "},
      {"single quotes removed", "General", "SQuoted", "single"},
      {"unmatched quotes kept", "General", "Mixed", "\"open'"},
      {"only the outer pair goes", "General", "Inner", "a\"b"},
      {"a lone quote stays", "General", "Lone", "\""},
      {"empty value is found, not defaulted", "General", "Empty", ""},
      {"line without = is no key", "General", "Bare line", "<default>"},
      {"indented comment is no key", "General", "Indented", "<default>"},
      {"semicolon later in a value is kept", "General", "Semi", "value ;not a comment"},
      {"hash is an ordinary character", "General", "Hash#", "kept"},
      {"first duplicate key wins", "General", "Dup", "first"},
      {"first duplicate section wins", "general", "Plain", "value"},
      {"lines before the first section are in none", "", "orphan", "<default>"},
      {"blanks inside brackets and text after them ignored", "Padded Section", "Key", "in padded"},
      {"header without closing bracket", "NoClose", "Key", "in unclosed"},
      {"last line without a break", "Last", "Final", "no line break"},
      {"missing section", "Nowhere", "Plain", "<default>"},
  };
  for (const auto& c : cases)
    EXPECT_EQ(vh::test::Get(c.section, c.key, file_), c.expected) << c.name;
}

TEST_P(ProfileRead, EnumeratesSectionsAndKeysAsNulSeparatedLists) {
  // Each literal ends with an explicit NUL; sizeof adds the implicit second.
  const char kSections[] = "General\0general\0Padded Section\0NoClose\0Last\0";
  const char kKeys[] = "Plain\0Spaced\0Tabbed\0DQuoted\0SQuoted\0Mixed\0Inner\0Twice\0Lone\0"
                       "Empty\0Semi\0Hash#\0Dup\0Dup\0";
  for (const std::string& list :
       {std::string(kSections, sizeof kSections), std::string(kKeys, sizeof kKeys)}) {
    std::vector<char> buf(512);
    const bool sections = list[0] == 'G';
    const uint32_t n = profile::GetPrivateProfileStringA(sections ? nullptr : "general",
                                                         sections ? "ignored" : nullptr, "dflt",
                                                         buf.data(), 512, file_.c_str());
    EXPECT_EQ(n, list.size() - 1);
    EXPECT_EQ(std::string(buf.data(), list.size()), list);
  }
}

INSTANTIATE_TEST_SUITE_P(
    LineBreaks, ProfileRead, ::testing::Values("\n", "\r\n", "\r"), [](const auto& info) {
      return std::string(info.index == 0 ? "Lf" : info.index == 1 ? "Crlf" : "Cr");
    });

TEST(ProfileReadBuffer, CutsToTheBufferAndCountsWhatWasCopied) {
  TempDir dir;
  const std::string file = dir.file("a.ini");
  vh::test::WriteFile(file, "[S]\nk=value\n[T]\n");
  const std::string missing = dir.file("none.ini");
  const struct {
    const char* name;
    const char* section;
    const char* key;
    uint32_t size;
    std::string bytes; // buffer contents up to the returned count + NULs
    uint32_t count;
    const char* def = "dflt";
  } cases[] = {
      {"value fits", "S", "k", 6, std::string("value\0", 6), 5},
      {"value cut to size-1", "S", "k", 5, std::string("valu\0", 5), 4},
      {"default cut too", "S", "none", 4, std::string("dfl\0", 4), 3},
      {"section list fits", nullptr, "k", 7, std::string("S\0T\0\0", 5), 4},
      {"section list cut to size-2", nullptr, "k", 3, std::string("S\0\0", 3), 1},
      {"list of one byte", nullptr, "k", 1, std::string("\0", 1), 0},
      {"empty key list", "T", nullptr, 8, std::string("\0\0", 2), 0},
      {"default's trailing spaces trimmed", "S", "none", 9, std::string("dflt\0", 5), 4, "dflt  "},
      {"default's leading spaces and tab kept", "S", "none", 9, std::string(" d\t\0", 4), 3,
       " d\t"},
      {"null default is empty", "S", "none", 9, std::string("\0", 1), 0, nullptr},
  };
  for (const auto& c : cases) {
    std::vector<char> buf(c.size + 4, '#');
    const uint32_t n = profile::GetPrivateProfileStringA(c.section, c.key, c.def, buf.data(),
                                                         c.size, file.c_str());
    EXPECT_EQ(n, c.count) << c.name;
    EXPECT_EQ(std::string(buf.data(), c.bytes.size()), c.bytes) << c.name;
    EXPECT_EQ(buf[c.size], '#') << c.name << ": wrote past the buffer";
  }
  char untouched = '#';
  EXPECT_EQ(profile::GetPrivateProfileStringA("S", "k", "", &untouched, 0, file.c_str()), 0u);
  EXPECT_EQ(untouched, '#');
  EXPECT_EQ(vh::test::Get("S", "k", missing), "<default>");
  EXPECT_FALSE(std::filesystem::exists(missing));
}

} // namespace
