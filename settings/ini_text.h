// In-memory view of a profile (INI) file: the line classification that both
// the reader and the writer of profile.h share, and the edits the writer
// makes. Private to settings/: the public contract is profile.h.
//
// Line grammar (one line = bytes up to a break: "\r\n", "\n" or "\r" alone):
//   blanks  = { ' ', '\t', '\v' }
//   section = blanks* "[" name ( "]" anything | end of line )   name trimmed of blanks
//   comment = blanks* ";" anything
//   entry   = blanks* key "=" value     key trimmed right, value trimmed both sides
//   bare    = blanks* text (no "=")     no key: never found nor listed
//   blank   = blanks*
// Lines before the first section belong to no section and are never found.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace profile::detail {

enum class LineKind { Blank, Comment, Section, Entry, Bare };

struct Line {
  size_t begin = 0; // first byte of the line
  size_t end = 0;   // one past its last content byte (break excluded)
  size_t next = 0;  // first byte of the following line
  LineKind kind = LineKind::Blank;
  std::string_view name;  // section name or key, as spelt in the file
  std::string_view value; // entry value, blanks trimmed, quotes kept
};

// Splits `text` into classified lines; the views point into `text`.
std::vector<Line> ParseLines(std::string_view text);

// Names passed by a caller lose their leading and trailing spaces (spaces
// only, not tabs) before they are compared or written.
std::string_view TrimCallerName(std::string_view name);
bool SameName(std::string_view a, std::string_view b);

// Whether a name written into a line reads back as the same name: no "]" in
// a section, no "=" in a key nor ";" or "[" at its start, and no blank at
// either end of either.
bool IsFindableSection(std::string_view name);
bool IsFindableKey(std::string_view name);
// A key starting with ";": its line is a comment.
bool IsCommentKey(std::string_view name);

// Every line written ends with it, whatever the file's other lines use.
inline constexpr std::string_view kLineBreak = "\r\n";

// Value of `key` in the first section named `section`, with one pair of
// matching outer quotes removed; nullopt when the section or key is missing.
std::optional<std::string_view> FindValue(std::string_view text, std::string_view section,
                                          std::string_view key);

// Every section name in file order (duplicates included).
std::vector<std::string_view> SectionNames(std::string_view text);
// Every key of the first section named `section`; empty when it is missing.
std::vector<std::string_view> KeyNames(std::string_view text, std::string_view section);

// The file text after setting `key` = `value` in `section`. Existing lines
// other than the changed one are kept byte for byte.
std::string SetValue(std::string_view text, std::string_view section, std::string_view key,
                     std::string_view value);
// The file text without the first `key` line of the first `section`.
std::string DeleteKey(std::string_view text, std::string_view section, std::string_view key);
// The file text without the first `section`'s header and key lines; its
// comments and blank lines stay.
std::string DeleteSection(std::string_view text, std::string_view section);

} // namespace profile::detail
