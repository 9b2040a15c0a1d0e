#include "settings/column_profile.h"

#include <optional>

#include "common/message.h"
#include "settings/access_setting.h"
#include "settings/value_fields.h"

namespace vh {
namespace {

// One group; nullopt when a field is missing.
std::optional<sColumnProfileEntry> ReadEntry(FieldReader& fields, int builtinCount) {
  sColumnProfileEntry e;
  const auto column = fields.Next(',');
  const auto position = column ? fields.Next(',') : std::nullopt;
  const auto width = position ? fields.Next(',') : std::nullopt;
  if (!width)
    return std::nullopt;
  e.column = ToInt(*column);
  e.position = ToInt(*position);
  e.width = ToInt(*width);
  if (e.column < builtinCount)
    return e;
  const auto name = fields.Next('#');
  const auto stored = name ? fields.Next('#') : std::nullopt;
  const auto displayed = stored ? fields.Next(',') : std::nullopt;
  if (!displayed)
    return std::nullopt;
  e.name = *name;
  e.storedExpression = *stored;
  e.displayExpression = *displayed;
  return e;
}

} // namespace

std::string FormatColumnProfile(const std::vector<sColumnProfileEntry>& entries, int builtinCount) {
  std::string value;
  for (const sColumnProfileEntry& e : entries) {
    if (!value.empty())
      value += ",";
    value +=
        std::to_string(e.column) + "," + std::to_string(e.position) + "," + std::to_string(e.width);
    if (e.column >= builtinCount)
      value += "," + e.name + "#" + e.storedExpression + "#" + e.displayExpression;
  }
  return value;
}

std::vector<sColumnProfileEntry> ParseColumnProfile(const std::string& value, int builtinCount) {
  std::vector<sColumnProfileEntry> entries;
  FieldReader fields(value);
  while (auto entry = ReadEntry(fields, builtinCount))
    entries.push_back(std::move(*entry));
  return entries;
}

bool LoadColumnProfileEntries(const std::string& profileName, int builtinCount,
                              std::vector<sColumnProfileEntry>& entries) {
  entries.clear();
  std::string value;
  if (AccessColumnProfile(kSettingLoad, profileName, value) == 0)
    return false;
  entries = ParseColumnProfile(value, builtinCount);
  return true;
}

bool SaveColumnProfileEntries(const std::string& profileName,
                              const std::vector<sColumnProfileEntry>& entries, int builtinCount) {
  std::string value = FormatColumnProfile(entries, builtinCount);
  if (AccessColumnProfile(kSettingWrite, profileName, value) != 0)
    return true;
  ShowMessage("Error while saving column profile");
  return false;
}

} // namespace vh
