#include "settings/dialog_position.h"

#include <cstdio>

#include "common/message.h"
#include "settings/profile.h"
#include "settings/settings_paths.h"
#include "settings/value_fields.h"

namespace vh {
namespace {

const char kSection[] = "DIALOG_POSITION";
const char kFile[] = "DialogPos.ini";
const char kNotFound[] = "Settings Not Found";

bool IsNumberField(std::string_view field) {
  for (size_t i = 0; i < field.size(); ++i) {
    const char c = field[i];
    if (!(c >= '0' && c <= '9') && !(c == '-' && i == 0))
      return false;
  }
  return true;
}

} // namespace

std::string FormatWindowPlacement(const sWindowPlacement& p) {
  char buf[160];
  std::snprintf(buf, sizeof buf, "%d,%d,%d,%d,%d,%d,%d,%d,%d", p.normalTop, p.normalLeft,
                p.normalBottom, p.normalRight, p.maxX, p.maxY, p.minX, p.minY, p.showState);
  return buf;
}

PlacementParse ParseWindowPlacement(const std::string& value, sWindowPlacement& out) {
  sWindowPlacement p;
  int* const slots[] = {&p.normalTop, &p.normalLeft, &p.normalBottom, &p.normalRight, &p.maxX,
                        &p.maxY,      &p.minX,       &p.minY,         &p.showState};
  size_t count = 0;
  FieldReader fields(value);
  while (const auto field = fields.Next(',')) {
    if (field->empty())
      continue;
    if (!IsNumberField(*field))
      return PlacementParse::Malformed;
    if (count < std::size(slots))
      *slots[count] = ToInt(*field);
    ++count;
  }
  if (count < 8)
    return PlacementParse::TooFew;
  out = p;
  return PlacementParse::Ok;
}

bool WriteWindowPlacement(const std::string& name, const sWindowPlacement& placement) {
  if (name.empty())
    return false;
  const std::string path = CommandLineFile(kFile);
  return profile::WritePrivateProfileStringA(
             kSection, name.c_str(), FormatWindowPlacement(placement).c_str(), path.c_str()) != 0;
}

std::optional<sWindowPlacement> ReadWindowPlacement(const std::string& name) {
  if (name.empty())
    return std::nullopt;
  char buffer[1024];
  const std::string path = CommandLineFile(kFile);
  const uint32_t n = profile::GetPrivateProfileStringA(kSection, name.c_str(), kNotFound, buffer,
                                                       sizeof buffer, path.c_str());
  const std::string value(buffer, n);
  if (n == 0) {
    SetStatusText("Could Not Find Saved Positions for " + name + "Dialog; Loading Defualt");
    return std::nullopt;
  }
  if (value == kNotFound)
    return std::nullopt;
  sWindowPlacement placement;
  switch (ParseWindowPlacement(value, placement)) {
  case PlacementParse::Ok:
    return placement;
  case PlacementParse::Malformed:
    SetStatusText("Error Occured While Reading saved Positions for " + name +
                  "Dialog; Loading Defualt");
    return std::nullopt;
  case PlacementParse::TooFew:
    break;
  }
  return std::nullopt;
}

} // namespace vh
