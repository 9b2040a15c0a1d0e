#include "grid/filter_match.h"

#include <gtest/gtest.h>

namespace vh {
namespace {

TEST(FilterMatch, Language) {
  const struct {
    const char* name;
    const char* filter;
    const char* cell;
    bool exact;
    bool matches;
  } cases[] = {
      // Prefixes, suffixes, stars, bounds and alternatives meet random texts
      // in the filter test's comparison with a direct scan; these rows pin
      // what a reader might not expect.
      {"only tilde shows everything", "~", "anything", false, true},
      {"only tildes, exact", "~~", "anything", true, true},
      {"empty pieces skipped", "~~xyz~", "xyz", false, true},
      {"lone star", "*", "", false, true},
      {"suffix not at end", "*SYS", "sysinfo", false, false},
      {"greater equal value", ">100", "100", false, false},
      {"greater leading spaces", ">100", "  250", false, true},
      {"greater numeric prefix", ">100", "150abc", false, true},
      {"greater non numeric bound matches nothing", ">abc", "5", false, false},
      {"less empty cell", "<5", "", false, false},
      {"less hex cell", "<5", "0x3", false, true},
      {"less bare 0x cell", "<5", "0x", false, false},
      {"letters beyond ASCII keep their case", "\xC4", "\xE4", false, false},
      {"only letters fold", "[", "{x", false, false},
      {"exact rejects longer cell", "abc", "abcd", true, false},
      {"exact takes stars literally", "*b*", "abc", true, false},
      {"exact alternatives", "abc~abcd", "abcd", true, true},
      {"exact greater literally", ">1", ">1", true, true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(FilterPattern(c.filter).Matches(c.cell, c.exact), c.matches);
  }
}

} // namespace
} // namespace vh
