#include "grid/filter_match.h"

#include "grid/row_convert.h"

namespace vh {
namespace {

std::string Lower(std::string_view text) {
  std::string out(text);
  for (char& c : out)
    c = AsciiLower(c);
  return out;
}

// `needle` is already lower-case; the cell is folded on the fly so that a
// million-row pass allocates nothing.
bool ContainsNoCase(std::string_view cell, std::string_view needle) {
  if (needle.empty())
    return true;
  if (needle.size() > cell.size())
    return false;
  const size_t last = cell.size() - needle.size();
  for (size_t i = 0; i <= last; ++i) {
    if (AsciiLower(cell[i]) != needle[0])
      continue;
    size_t k = 1;
    while (k < needle.size() && AsciiLower(cell[i + k]) == needle[k])
      ++k;
    if (k == needle.size())
      return true;
  }
  return false;
}

} // namespace

FilterPattern::FilterPattern(std::string_view filterText) {
  size_t start = 0;
  while (start <= filterText.size()) {
    size_t end = filterText.find('~', start);
    if (end == std::string_view::npos)
      end = filterText.size();
    const std::string_view piece = filterText.substr(start, end - start);
    start = end + 1;
    if (piece.empty())
      continue;
    Alternative alt{Kind::kPrefix, std::string(piece), {}, 0, false};
    if (piece[0] == '*' && piece.back() == '*') {
      alt.kind = Kind::kContains;
      alt.needle = piece.size() >= 2 ? Lower(piece.substr(1, piece.size() - 2)) : std::string();
    } else if (piece[0] == '*') {
      alt.kind = Kind::kSuffix;
      alt.needle = Lower(piece.substr(1));
    } else if (piece[0] == '>' || piece[0] == '<') {
      alt.kind = piece[0] == '>' ? Kind::kGreater : Kind::kLess;
      alt.boundIsNumber = CScanDouble(piece.substr(1), alt.bound);
    }
    alternatives_.push_back(std::move(alt));
  }
}

bool FilterPattern::MatchOne(const Alternative& alt, std::string_view cell, bool exact) {
  if (exact)
    return EqualsNoCase(alt.raw, cell);
  switch (alt.kind) {
  case Kind::kContains:
    return ContainsNoCase(cell, alt.needle);
  case Kind::kSuffix:
    return cell.size() >= alt.needle.size() &&
           EqualsNoCase(cell.substr(cell.size() - alt.needle.size()), alt.needle);
  case Kind::kGreater:
  case Kind::kLess: {
    double value = 0;
    if (!alt.boundIsNumber || !CScanDouble(cell, value))
      return false;
    return alt.kind == Kind::kGreater ? value > alt.bound : value < alt.bound;
  }
  case Kind::kPrefix:
    return StartsWithNoCase(cell, alt.raw);
  }
  return false;
}

bool FilterPattern::Matches(std::string_view cell, bool exact) const {
  if (alternatives_.empty())
    return true;
  for (const Alternative& alt : alternatives_)
    if (MatchOne(alt, cell, exact))
      return true;
  return false;
}

bool FilterPattern::ComparesNumbersOnly() const {
  for (const Alternative& alt : alternatives_)
    if (alt.kind != Kind::kGreater && alt.kind != Kind::kLess)
      return false;
  return true;
}

std::string JoinFilterSelection(const std::vector<std::string>& picked) {
  std::string joined;
  for (const std::string& value : picked) {
    if (joined.find(value) != std::string::npos)
      continue;
    if (!joined.empty())
      joined += '~';
    joined += value;
  }
  return joined;
}

} // namespace vh
