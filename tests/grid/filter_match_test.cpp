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
      {"empty filter", "", "anything", false, true},
      {"only tilde", "~", "anything", false, true},
      {"only tildes, exact", "~~", "anything", true, true},
      {"prefix ignores case", "abc", "ABCdef", false, true},
      {"prefix longer than cell", "abcd", "abc", false, false},
      {"prefix elsewhere", "bc", "abc", false, false},
      {"first alternative", "abc~xyz", "abc1", false, true},
      {"second alternative", "abc~xyz", "XYZ1", false, true},
      {"no alternative", "abc~xyz", "pqr", false, false},
      {"empty pieces skipped", "~~xyz~", "xyz", false, true},
      {"contains", "*inf*", "XINFOSYS", false, true},
      {"contains misses", "*inf*", "IN F", false, false},
      {"lone star", "*", "", false, true},
      {"two stars", "**", "abc", false, true},
      {"suffix", "*SYS", "infosys", false, true},
      {"suffix not at end", "*SYS", "sysinfo", false, false},
      {"suffix longer than cell", "*ABCD", "bcd", false, false},
      {"greater", ">100", "100.5", false, true},
      {"greater equal value", ">100", "100", false, false},
      {"greater leading spaces", ">100", "  250", false, true},
      {"greater non numeric cell", ">100", "abc", false, false},
      {"greater numeric prefix", ">100", "150abc", false, true},
      {"greater non numeric bound", ">abc", "5", false, false},
      {"less", "<0", "-1", false, true},
      {"less not", "<0", "0", false, false},
      {"less empty cell", "<5", "", false, false},
      {"less hex cell", "<5", "0x3", false, true},
      {"less bare 0x cell", "<5", "0x", false, false},
      {"exact equal ignores case", "abc", "ABC", true, true},
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

TEST(FilterMatch, JoinSelection) {
  const struct {
    const char* name;
    std::vector<std::string> picked;
    const char* joined;
  } cases[] = {
      {"none", {}, ""},
      {"one", {"TCS"}, "TCS"},
      {"two", {"INFY", "TCS"}, "INFY~TCS"},
      {"contained in earlier pick dropped", {"INFYBEES", "INFY", "TCS"}, "INFYBEES~TCS"},
      {"containing a later pick kept", {"INFY", "INFYBEES"}, "INFY~INFYBEES"},
      {"empty never added", {"", "A"}, "A"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(JoinFilterSelection(c.picked), c.joined);
  }
}

} // namespace
} // namespace vh
