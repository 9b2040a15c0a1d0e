// The header filter language, compiled once per filtering pass.
//
//   filter      := alternative { "~" alternative }   empty pieces are skipped
//   alternative := "*" text "*"   cell contains text (case ignored)
//                | "*" text       cell ends with text (case ignored)
//                | ">" number     cell reads as a number above it
//                | "<" number     cell reads as a number below it
//                | text           cell begins with text (case ignored)
//
// In exact mode every alternative must equal the whole cell, case ignored.
// A filter with no non-empty alternative (empty, or only "~") lets every
// cell through.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace vh {

class FilterPattern {
public:
  explicit FilterPattern(std::string_view filterText);

  // True when `cell` passes; `exact` selects whole-text equality.
  bool Matches(std::string_view cell, bool exact) const;

  bool MatchesEverything() const { return alternatives_.empty(); }

  // True when every alternative is a ">" or "<" one: outside exact mode
  // such a filter sees only the number "%lf" reads from the cell.
  bool ComparesNumbersOnly() const;
  // Matches(cell, false) for a cell that "%lf" reads as `value`; only
  // meaningful when ComparesNumbersOnly().
  // True with the alternatives' texts when every alternative is a plain
  // prefix one (cell begins with it, case ignored).
  bool PrefixesOnly(std::vector<std::string_view>& prefixes) const {
    prefixes.clear();
    for (const Alternative& alt : alternatives_) {
      if (alt.kind != Kind::kPrefix)
        return false;
      prefixes.push_back(alt.raw);
    }
    return !prefixes.empty();
  }

  // The ">"/"<" alternatives whose operand reads as a number (the others
  // never match).
  struct NumberTest {
    bool greater;
    double bound;
  };
  std::vector<NumberTest> NumberTests() const {
    std::vector<NumberTest> tests;
    for (const Alternative& alt : alternatives_)
      if (alt.boundIsNumber && (alt.kind == Kind::kGreater || alt.kind == Kind::kLess))
        tests.push_back({alt.kind == Kind::kGreater, alt.bound});
    return tests;
  }
  bool MatchesNumber(double value) const {
    for (const Alternative& alt : alternatives_)
      if (alt.boundIsNumber && (alt.kind == Kind::kGreater ? value > alt.bound : value < alt.bound))
        return true;
    return false;
  }

private:
  enum class Kind { kContains, kSuffix, kGreater, kLess, kPrefix };
  struct Alternative {
    Kind kind;
    std::string raw;    // the piece as typed, for exact mode
    std::string needle; // lower-cased operand of the contains and suffix forms
    double bound = 0;   // operand of > and <
    bool boundIsNumber = false;
  };
  static bool MatchOne(const Alternative& alt, std::string_view cell, bool exact);

  std::vector<Alternative> alternatives_;
};

// Joins the values picked in the distinct-value pop-up into one filter text
// with "~". A value that already occurs anywhere in the text joined so far
// is dropped, so a value contained in an earlier pick is lost (kept as the
// users know it).
std::string JoinFilterSelection(const std::vector<std::string>& picked);

} // namespace vh
