#include "settings/default_sort.h"

#include "settings/profile.h"
#include "settings/settings_paths.h"

#include <vector>

namespace vh {

namespace {

// A column name is at most 63 characters; the rest is room for the
// direction and for a hand-edited value that is then cut.
constexpr uint32_t kDefaultSortBuffer = 256;

} // namespace

bool LoadDefaultSortText(const std::string& profileName, std::string& text) {
  std::vector<char> buffer(kDefaultSortBuffer);
  const uint32_t n =
      profile::GetPrivateProfileStringA(profileName.c_str(), kDefaultSortKey, "", buffer.data(),
                                        kDefaultSortBuffer, GridSettingsFile().c_str());
  text.assign(buffer.data(), n);
  return n > 0;
}

bool SaveDefaultSortText(const std::string& profileName, const std::string& text) {
  return profile::WritePrivateProfileStringA(profileName.c_str(), kDefaultSortKey, text.c_str(),
                                             GridSettingsFile().c_str()) != 0;
}

} // namespace vh
