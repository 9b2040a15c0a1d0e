#include "settings/list_appearance.h"

#include <algorithm>
#include <cstdint>

#include "settings/profile.h"
#include "settings/settings_paths.h"
#include "settings/value_fields.h"

namespace vh {
namespace {

const char kSection[] = "CUSTOMIZE_LISTS";
const char kNotFound[] = "String not found";

std::string Lowered(std::string_view s) {
  std::string out(s);
  for (char& c : out) {
    if (c >= 'A' && c <= 'Z')
      c = static_cast<char>(c - 'A' + 'a');
  }
  return out;
}

// The keyword pairs after the keyword column. All or nothing: a keyword
// whose colour is missing empties the lists.
void ReadKeywords(FieldReader& fields, sListAppearance& a) {
  auto keyword = fields.Next(',');
  if (!keyword || keyword->empty())
    return;
  a.keywordColours = std::make_shared<std::vector<uint32_t>>();
  a.keywordTexts = std::make_shared<std::vector<std::string>>();
  while (keyword && !keyword->empty()) {
    const auto colour = fields.Next(',');
    if (!colour || colour->empty()) {
      a.keywordColours->clear();
      a.keywordTexts->clear();
      return;
    }
    a.keywordColours->push_back(ToHexColour(*colour));
    a.keywordTexts->push_back(Lowered(*keyword));
    keyword = fields.Next(',');
  }
}

} // namespace

sListAppearance& DefaultListAppearance() {
  static sListAppearance defaults;
  return defaults;
}

std::string ListAppearanceKey(const std::string& profileName, int controlId) {
  return profileName + "-" + std::to_string(controlId);
}

std::string FormatListAppearance(const sListAppearance& a) {
  std::string value = HexColour(a.backgroundColour) + "," + HexColour(a.textColour) + "," +
                      a.fontFace + "," + a.fontSize;
  if (a.keywordColumn == -1)
    return value;
  value += "," + std::to_string(a.keywordColumn) + ",";
  if (a.keywordTexts && a.keywordColours) {
    const size_t n = std::min(a.keywordTexts->size(), a.keywordColours->size());
    for (size_t i = 0; i < n; ++i)
      value += Lowered((*a.keywordTexts)[i]) + "," + HexColour((*a.keywordColours)[i]) + ",";
  }
  return value;
}

sListAppearance ParseListAppearance(const std::string& value) {
  sListAppearance a = DefaultListAppearance();
  FieldReader fields(value);
  if (auto f = fields.Next(','))
    a.backgroundColour = ToHexColour(*f);
  if (auto f = fields.Next(','))
    a.textColour = ToHexColour(*f);
  if (auto f = fields.Next(','))
    a.fontFace = *f;
  if (auto f = fields.Next(','))
    a.fontSize = *f;
  const auto column = fields.Next(',');
  a.keywordColumn = column ? ToInt(*column) : -1;
  if (a.keywordColumn != -1)
    ReadKeywords(fields, a);
  a.keywordColouring = a.keywordTexts && !a.keywordTexts->empty();
  return a;
}

bool LoadListAppearance(const std::string& profileName, int controlId, sListAppearance& out) {
  char buffer[1000];
  const std::string path = GridSettingsFile();
  const uint32_t n =
      profile::GetPrivateProfileStringA(kSection, ListAppearanceKey(profileName, controlId).c_str(),
                                        kNotFound, buffer, sizeof buffer, path.c_str());
  const std::string value(buffer, n);
  if (n == 0 || value == kNotFound) {
    out = DefaultListAppearance();
    return false;
  }
  out = ParseListAppearance(value);
  return true;
}

bool SaveListAppearance(const std::string& profileName, int controlId,
                        const sListAppearance& appearance) {
  const std::string path = GridSettingsFile();
  return profile::WritePrivateProfileStringA(
             kSection, ListAppearanceKey(profileName, controlId).c_str(),
             FormatListAppearance(appearance).c_str(), path.c_str()) != 0;
}

ListFont MakeListFont(const std::string& face, const std::string& sizeText, int dpi) {
  // Integer multiply-divide rounded half away from zero, in 64 bits so that
  // no size read from a file can overflow it.
  const int64_t product = static_cast<int64_t>(ToInt(sizeText)) * dpi;
  const int64_t rounded = (product >= 0 ? product + 36 : product - 36) / 72;
  const int64_t height = std::clamp<int64_t>(-rounded, INT32_MIN, INT32_MAX);
  return ListFont{face, static_cast<int>(height)};
}

} // namespace vh
