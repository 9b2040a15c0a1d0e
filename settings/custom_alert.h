// Alert rules on custom columns and the view's title, as kept in
// UserSetting.ini in the command-line directory.
//
// Rule value, section "CUSTOMIZE_WINDOW", key = the custom column's name:
//   field2 "|" field1 "|" field3 "|" field5 "|" field4
// i.e. column name | comparison | threshold | column number | key. Nothing
// is escaped: a "|" inside a field breaks the value. A deleted rule keeps
// its key with a single blank as the value, which reads back as no rule.
#pragma once

#include <optional>
#include <string>

namespace vh {

// Five text fields serving two uses:
//   field | as a rule                                   | as a hit
//   1     | "less than or equal to" / "greater than or  | custom column name
//         |  equal to"                                  |
//   2     | custom column name                          | the row's ISIN
//   3     | threshold, as typed                         | computed value, as text
//   4     | key: the custom column name again           | the row's client ID
//   5     | custom column number, decimal text          | time stamp "%d/%m/%Y %H:%M:%S"
struct CustomAlert {
  std::string field1;
  std::string field2;
  std::string field3;
  std::string field4;
  std::string field5;
};

std::string FormatAlertRule(const CustomAlert& rule);

// The rule stored under `key`: the first four "|" pieces fill fields 2, 1, 3
// and 5 (missing pieces stay empty) and field 4 is `key`; the fifth piece is
// not read. nullopt for a blank value (a deleted rule).
std::optional<CustomAlert> ParseAlertRule(const std::string& key, const std::string& value);

// Reads the rule of `columnName`; nullopt when the file cannot be opened,
// the key is missing or the rule was deleted.
std::optional<CustomAlert> ReadAlertRule(const std::string& columnName);
// Writes `rule` under `key`. Returns false when the file cannot be written.
bool WriteAlertRule(const std::string& key, const CustomAlert& rule);
// Overwrites the rule of `key` with a single blank. Returns false when the
// file cannot be written.
bool DeleteAlertRule(const std::string& key);

// The view's title is written under "CUSTOMIZE_TITLE" but read from
// "CUSTOMIZE_WINDOW": a title written by the view is never read back; one
// placed there by hand is. Kept so on purpose.
bool WriteViewTitle(const std::string& title);
// nullopt when UserSetting.ini is not in the command-line directory or has
// no title.
std::optional<std::string> ReadViewTitle();

} // namespace vh
