#include "settings/custom_alert.h"

#include <unistd.h>

#include "settings/access_setting.h"
#include "settings/settings_paths.h"
#include "settings/value_fields.h"

namespace vh {
namespace {

const char kFile[] = "UserSetting.ini";
const char kWindowSection[] = "CUSTOMIZE_WINDOW";

bool IsBlankValue(const std::string& value) {
  return value.find_first_not_of(" \t\v") == std::string::npos;
}

} // namespace

std::string FormatAlertRule(const CustomAlert& r) {
  return r.field2 + "|" + r.field1 + "|" + r.field3 + "|" + r.field5 + "|" + r.field4;
}

std::optional<CustomAlert> ParseAlertRule(const std::string& key, const std::string& value) {
  if (IsBlankValue(value))
    return std::nullopt;
  CustomAlert rule;
  FieldReader pieces(value);
  std::string* const order[] = {&rule.field2, &rule.field1, &rule.field3, &rule.field5};
  for (std::string* field : order) {
    const auto piece = pieces.Next('|');
    if (!piece)
      break;
    *field = *piece;
  }
  rule.field4 = key;
  return rule;
}

std::optional<CustomAlert> ReadAlertRule(const std::string& columnName) {
  std::string value;
  if (AccessSettingValue(kSettingRead, kWindowSection, columnName, value, kFile) == 0)
    return std::nullopt;
  return ParseAlertRule(columnName, value);
}

bool WriteAlertRule(const std::string& key, const CustomAlert& rule) {
  std::string value = FormatAlertRule(rule);
  return AccessSettingValue(kSettingWrite, kWindowSection, key, value, kFile) != 0;
}

bool DeleteAlertRule(const std::string& key) {
  std::string blank = " ";
  return AccessSettingValue(kSettingWrite, kWindowSection, key, blank, kFile) != 0;
}

bool WriteViewTitle(const std::string& title) {
  std::string value = title;
  return AccessSettingValue(kSettingWrite, "CUSTOMIZE_TITLE", "Title1", value, kFile) != 0;
}

std::optional<std::string> ReadViewTitle() {
  if (::access(CommandLineFile(kFile).c_str(), R_OK) != 0)
    return std::nullopt;
  std::string title;
  if (AccessSettingValue(kSettingRead, kWindowSection, "Title1", title, kFile) == 0)
    return std::nullopt;
  return title;
}

} // namespace vh
