// The column profile of one grid and its settings value.
//
// Value, section "<profile name>", key "COLUMNPROFILE": one group per record
// of the grid's column table, in table order, joined by ",":
//   column "," position "," width [ "," name "#" stored "#" displayed ]
// position is -1 for a hidden column; the definition follows only for a
// custom column (column number at or above the built-in count). Example with
// three built-in columns, the second hidden: 0,0,80,1,-1,0,2,1,95
// Nothing is escaped, which is why custom column names may not hold "#" or ",".
#pragma once

#include <string>
#include <vector>

namespace vh {

struct sColumnProfileEntry {
  int column = 0;   // index in the column table
  int position = 0; // place in the header, -1 when hidden
  int width = 0;    // pixels; 0 when no header item carries the column's name
  // Only for custom columns.
  std::string name;
  std::string storedExpression;
  std::string displayExpression;
};

// A custom column rebuilt from a profile always gets this look; the profile's
// width only sets the displayed width.
inline constexpr int kRestoredCustomWidth = 80;
inline constexpr int kRestoredCustomFormat = 1;
inline constexpr int kRestoredCustomType = 2;

// The value for `entries`; an entry whose column is at or above
// `builtinCount` carries its definition.
std::string FormatColumnProfile(const std::vector<sColumnProfileEntry>& entries, int builtinCount);

// The entries of a stored value, in order. Numbers convert as atoi does
// (junk gives 0). Parsing stops quietly at the first missing field; the
// entry it was reading is dropped, so a custom column whose definition was
// cut off loses it. Never fails.
std::vector<sColumnProfileEntry> ParseColumnProfile(const std::string& value, int builtinCount);

// Reads the grid's profile (cut to 4,095 characters). Returns false, with
// `entries` empty, when there is none or the file cannot be opened (the
// message "File Open Failed" is then shown).
bool LoadColumnProfileEntries(const std::string& profileName, int builtinCount,
                              std::vector<sColumnProfileEntry>& entries);

// Writes the grid's profile; on failure shows "Error while saving column
// profile" (after "File Open Failed" when the file could not be opened) and
// returns false.
bool SaveColumnProfileEntries(const std::string& profileName,
                              const std::vector<sColumnProfileEntry>& entries, int builtinCount);

} // namespace vh
