// Where the settings files live. Two directories are kept for the plug-in's
// lifetime: the settings directory (the host executable's directory), used
// by the grid routines, and the command-line directory (the directory of the
// process's first command-line argument), used by the alert, title and
// window-position routines. Both are injectable so that tests and headless
// runs choose their own.
#pragma once

#include <string>

namespace vh {

struct SettingsPaths {
  std::string settingsDirectory;
  std::string commandLineDirectory;
};

// The path separator of the platform ("/" here; "\" on Windows).
extern const char kPathSeparator;

// `path` cut before its last separator ("" when it has none). On Windows
// both "\" and "/" count.
std::string DirectoryOfPath(const std::string& path);

// Installs `paths` and returns the ones installed before.
SettingsPaths SetSettingsPaths(SettingsPaths paths);
const SettingsPaths& CurrentSettingsPaths();

// Settings directory + separator + "UserSetting.ini". An empty directory
// yields a file at the root, deliberately not guarded.
std::string GridSettingsFile();
// Command-line directory + separator + `fileName`.
std::string CommandLineFile(const std::string& fileName);

// Installs paths for the lifetime of the object and restores the previous
// ones afterwards.
class ScopedSettingsPaths {
public:
  explicit ScopedSettingsPaths(SettingsPaths paths) : old_(SetSettingsPaths(std::move(paths))) {}
  ~ScopedSettingsPaths() { SetSettingsPaths(std::move(old_)); }
  ScopedSettingsPaths(const ScopedSettingsPaths&) = delete;
  ScopedSettingsPaths& operator=(const ScopedSettingsPaths&) = delete;

private:
  SettingsPaths old_;
};

} // namespace vh
