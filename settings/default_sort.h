// The default sort of one grid: the text of the column profile dialog's
// "Default Sort For: " edit, kept next to the grid's column profile.
//
// Section "<profile name>", key "DEFAULTSORT" of UserSetting.ini in the
// settings directory. Value: a column's name, optionally followed by "," and
// "D" (descending) or "A" (ascending, the default), e.g. "Holdings Qty,D".
// An empty value means no default sort. Written as given; nothing escaped.
#pragma once

#include <string>

namespace vh {

inline constexpr const char* kDefaultSortKey = "DEFAULTSORT";

// Reads the grid's default sort text into `text`. Returns false, with
// `text` empty, when the file, section or key is missing or the value is
// empty. Shows nothing.
bool LoadDefaultSortText(const std::string& profileName, std::string& text);

// Writes `text` as the grid's default sort (creating the file). Returns
// false when it cannot be written (the old file stays whole); shows nothing.
bool SaveDefaultSortText(const std::string& profileName, const std::string& text);

} // namespace vh
