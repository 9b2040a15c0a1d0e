#include "settings/settings_paths.h"

#include <utility>

namespace vh {
namespace {

SettingsPaths& Paths() {
  static SettingsPaths paths;
  return paths;
}

} // namespace

#ifdef _WIN32
const char kPathSeparator = '\\';
#else
const char kPathSeparator = '/';
#endif

std::string DirectoryOfPath(const std::string& path) {
#ifdef _WIN32
  const size_t cut = path.find_last_of("\\/");
#else
  const size_t cut = path.rfind('/');
#endif
  return cut == std::string::npos ? std::string() : path.substr(0, cut);
}

SettingsPaths SetSettingsPaths(SettingsPaths paths) {
  return std::exchange(Paths(), std::move(paths));
}

const SettingsPaths& CurrentSettingsPaths() {
  return Paths();
}

std::string GridSettingsFile() {
  return Paths().settingsDirectory + kPathSeparator + "UserSetting.ini";
}

std::string CommandLineFile(const std::string& fileName) {
  return Paths().commandLineDirectory + kPathSeparator + fileName;
}

} // namespace vh
