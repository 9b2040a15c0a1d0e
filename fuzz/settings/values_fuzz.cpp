// Every settings value grammar, chosen by the first byte. Each parser must
// accept anything, and formatting what it parsed must be a fixed point:
// parse(format(parse(x))) formats to the same text again.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "settings/column_profile.h"
#include "settings/custom_alert.h"
#include "settings/dialog_position.h"
#include "settings/list_appearance.h"

namespace {

void Check(bool ok) {
  if (!ok)
    std::abort();
}

void Appearance(const std::string& v) {
  const std::string once = vh::FormatListAppearance(vh::ParseListAppearance(v));
  Check(vh::FormatListAppearance(vh::ParseListAppearance(once)) == once);
  const vh::sListAppearance a = vh::ParseListAppearance(v);
  (void)vh::MakeListFont(a.fontFace, a.fontSize, 96);
}

void ColumnProfile(const std::string& v, int builtin) {
  const std::string once = vh::FormatColumnProfile(vh::ParseColumnProfile(v, builtin), builtin);
  Check(vh::FormatColumnProfile(vh::ParseColumnProfile(once, builtin), builtin) == once);
}

void AlertRule(const std::string& v) {
  const auto rule = vh::ParseAlertRule("key", v);
  if (!rule)
    return;
  const auto again = vh::ParseAlertRule("key", vh::FormatAlertRule(*rule));
  Check(again && vh::FormatAlertRule(*again) == vh::FormatAlertRule(*rule));
}

void Placement(const std::string& v) {
  vh::sWindowPlacement p;
  if (vh::ParseWindowPlacement(v, p) != vh::PlacementParse::Ok)
    return;
  vh::sWindowPlacement q;
  Check(vh::ParseWindowPlacement(vh::FormatWindowPlacement(p), q) == vh::PlacementParse::Ok);
  Check(vh::FormatWindowPlacement(q) == vh::FormatWindowPlacement(p));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2)
    return 0;
  const std::string value(reinterpret_cast<const char*>(data) + 2, size - 2);
  switch (data[0] % 4) {
  case 0:
    Appearance(value);
    break;
  case 1:
    ColumnProfile(value, data[1] % 64);
    break;
  case 2:
    AlertRule(value);
    break;
  case 3:
    Placement(value);
    break;
  }
  return 0;
}
