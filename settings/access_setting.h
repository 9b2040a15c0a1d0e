// The two routines through which every settings value is read and written.
// Both return 1 on success and 0 otherwise; neither throws.
#pragma once

#include <string>

namespace vh {

enum SettingMode : int {
  kSettingLoad = 0,  // AccessColumnProfile only
  kSettingWrite = 1, // both
  kSettingRead = 2,  // AccessSettingValue only
};

// Reads or writes one value of `fileName` in the command-line directory.
// Mode 1 writes `value` under `section`/`key` (creating the file); mode 2
// reads it into `value`. Returns 0 when the file cannot be opened (the status
// text "Did not detect <fileName>" is composed, not shown), when the write
// fails, when the key is missing or empty (mode 2 then empties `value`), and
// for any other mode.
int AccessSettingValue(int mode, const std::string& section, const std::string& key,
                       std::string& value, const std::string& fileName);

// Reads (mode 0) or writes (mode 1) the "COLUMNPROFILE" value of section
// `profileName` in the settings directory's UserSetting.ini. A file that
// cannot be opened shows the message "File Open Failed" and returns 0. A read
// is cut to 4,095 characters; it returns 0 when the key is missing or empty.
// Any other mode returns 0.
int AccessColumnProfile(int mode, const std::string& profileName, std::string& value);

} // namespace vh
