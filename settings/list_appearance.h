// Grid appearance (colours, keyword colouring, font) and its settings value.
//
// Value, section "CUSTOMIZE_LISTS", key "<profile name>-<control id>":
//   background "," text "," font face "," font size [ "," keyword part ]
//   keyword part = keyword column "," { keyword "," colour "," }
// Colours are upper-case hex without prefix; the keyword part exists only
// when a keyword column is chosen, so a full value ends with a comma:
//   0,FF00,MS Shell Dlg 2,8,3,buy,FF,sell,FF0000,
// Nothing is escaped: a comma inside a face name or keyword breaks the value.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

namespace vh {

// Colours are 0x00BBGGRR, red in the low byte.
struct sListAppearance {
  uint32_t backgroundColour = 0x000000;
  uint32_t textColour = 0x00FF00;
  // Parallel arrays, shared (not duplicated) when the record is copied, so a
  // grid that takes the defaults shares the default instance's arrays. Null
  // means no keywords.
  std::shared_ptr<std::vector<uint32_t>> keywordColours;
  std::shared_ptr<std::vector<std::string>> keywordTexts; // lower case
  int32_t keywordColumn = -1;                             // -1: none
  bool keywordColouring = false;
  std::string fontFace = "MS Shell Dlg 2";
  std::string fontSize = "8"; // points, decimal text
};

// The instance that holds the defaults for every grid without its own value.
sListAppearance& DefaultListAppearance();

// The settings key of a grid: "<profile name>-<control id>".
std::string ListAppearanceKey(const std::string& profileName, int controlId);

// The value for `appearance`; keywords are written in lower case.
std::string FormatListAppearance(const sListAppearance& appearance);

// Parses a stored value over a copy of the defaults. Fields missing at the
// end keep their default (a missing keyword column means none). The keyword
// list is taken whole or not at all: a keyword without a colour drops every
// keyword read before it, leaving empty arrays. Keyword colouring is on when
// at least one keyword was read. Never fails.
sListAppearance ParseListAppearance(const std::string& value);

// Reads the grid's value from the settings directory's UserSetting.ini.
// Returns true with `out` parsed from it when the grid has its own value;
// false with `out` a copy of the defaults when the key, the section or the
// file is missing or the value is empty.
bool LoadListAppearance(const std::string& profileName, int controlId, sListAppearance& out);

// Writes the grid's value. Returns false when the file cannot be written.
bool SaveListAppearance(const std::string& profileName, int controlId,
                        const sListAppearance& appearance);

// The font a grid shows: the face, and the height in device pixels for the
// screen's logical pixels per inch, negative as a character height:
// -(points * dpi / 72), rounded half away from zero.
struct ListFont {
  std::string face;
  int height = 0;
};
ListFont MakeListFont(const std::string& face, const std::string& sizeText, int dpi);

} // namespace vh
