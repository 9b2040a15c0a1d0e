#include "widgets/appearance_edit.h"

#include <algorithm>
#include <memory>
#include <vector>

namespace vh {
namespace {

std::string Lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out)
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  return out;
}

// Gives `a` arrays of its own, equal in length (a record read from an odd
// value could hold arrays of different lengths; the shorter one rules).
void OwnArrays(sListAppearance& a) {
  const size_t n = KeywordCount(a);
  auto texts = std::make_shared<std::vector<std::string>>();
  auto colours = std::make_shared<std::vector<uint32_t>>();
  for (size_t i = 0; i < n; ++i) {
    texts->push_back((*a.keywordTexts)[i]);
    colours->push_back((*a.keywordColours)[i]);
  }
  a.keywordTexts = std::move(texts);
  a.keywordColours = std::move(colours);
}

int IndexOf(const sListAppearance& a, const std::string& keyword) {
  for (size_t i = 0; i < KeywordCount(a); ++i)
    if ((*a.keywordTexts)[i] == keyword)
      return static_cast<int>(i);
  return -1;
}

} // namespace

bool IsStorableText(std::string_view text) {
  return !text.empty() && text.find(',') == std::string_view::npos;
}

bool IsFontSize(std::string_view text) {
  if (text.empty() || text.size() > 3)
    return false;
  int points = 0;
  for (char c : text) {
    if (c < '0' || c > '9')
      return false;
    points = points * 10 + (c - '0');
  }
  return points >= 1 && points <= kMaxFontPoints;
}

size_t KeywordCount(const sListAppearance& a) {
  if (!a.keywordTexts || !a.keywordColours)
    return 0;
  return std::min(a.keywordTexts->size(), a.keywordColours->size());
}

int SetKeyword(sListAppearance& a, std::string_view keyword, uint32_t colour) {
  if (!IsStorableText(keyword))
    return -1;
  const std::string lowered = Lowered(keyword);
  OwnArrays(a);
  int index = IndexOf(a, lowered);
  if (index < 0) {
    a.keywordTexts->push_back(lowered);
    a.keywordColours->push_back(colour);
    index = static_cast<int>(a.keywordTexts->size()) - 1;
  } else {
    (*a.keywordColours)[static_cast<size_t>(index)] = colour;
  }
  return index;
}

bool ChangeKeyword(sListAppearance& a, size_t index, std::string_view keyword, uint32_t colour) {
  if (index >= KeywordCount(a) || !IsStorableText(keyword))
    return false;
  const std::string lowered = Lowered(keyword);
  const int existing = IndexOf(a, lowered);
  if (existing >= 0 && static_cast<size_t>(existing) != index)
    return false;
  OwnArrays(a);
  (*a.keywordTexts)[index] = lowered;
  (*a.keywordColours)[index] = colour;
  return true;
}

bool RemoveKeyword(sListAppearance& a, size_t index) {
  if (index >= KeywordCount(a))
    return false;
  OwnArrays(a);
  a.keywordTexts->erase(a.keywordTexts->begin() + static_cast<ptrdiff_t>(index));
  a.keywordColours->erase(a.keywordColours->begin() + static_cast<ptrdiff_t>(index));
  return true;
}

void UpdateKeywordColouring(sListAppearance& a) {
  a.keywordColouring = a.keywordColumn >= 0 && KeywordCount(a) > 0;
}

} // namespace vh
