#include "settings/access_setting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "common/message.h"
#include "settings/profile.h"
#include "settings/settings_paths.h"

namespace vh {
namespace {

// The routines open the file themselves before the profile functions touch
// it: that open is what decides "not detected", and it creates the file for
// a write. The handle stays open while the profile function runs. A file
// without any write permission bit counts as read-only even for root, who
// could otherwise open it for writing. A FIFO in the file's place must not
// hang the open, hence non-blocking.
class OpenedFile {
public:
  OpenedFile(const std::string& path, int flags)
      : fd_(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0644)) {
    struct stat st {};
    if (fd_ >= 0 && (::fstat(fd_, &st) != 0 || !S_ISREG(st.st_mode) ||
                     ((flags & O_ACCMODE) != O_RDONLY && (st.st_mode & 0222) == 0)))
      reset();
  }
  ~OpenedFile() { reset(); }
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  bool ok() const { return fd_ >= 0; }

private:
  void reset() {
    if (fd_ >= 0)
      ::close(fd_);
    fd_ = -1;
  }
  int fd_;
};

constexpr int kAppend = O_WRONLY | O_APPEND | O_CREAT;

// Reads `key` into a buffer of `size` bytes; false when nothing came back
// or the default came back.
bool ReadInto(const std::string& section, const std::string& key, const char* missing,
              uint32_t size, const std::string& path, std::string& value) {
  std::vector<char> buffer(size);
  const uint32_t n = profile::GetPrivateProfileStringA(section.c_str(), key.c_str(), missing,
                                                       buffer.data(), size, path.c_str());
  if (n == 0)
    return false;
  value.assign(buffer.data(), n);
  return value != missing;
}

} // namespace

int AccessSettingValue(int mode, const std::string& section, const std::string& key,
                       std::string& value, const std::string& fileName) {
  if (mode != kSettingWrite && mode != kSettingRead)
    return 0;
  const std::string path = CommandLineFile(fileName);
  if (mode == kSettingWrite) {
    OpenedFile file(path, kAppend);
    if (!file.ok()) {
      // Created empty when it is missing, so that the next run detects it.
      OpenedFile created(path, O_WRONLY | O_CREAT | O_EXCL);
      SetStatusText("Did not detect " + fileName);
      return 0;
    }
    return profile::WritePrivateProfileStringA(section.c_str(), key.c_str(), value.c_str(),
                                               path.c_str()) != 0;
  }
  OpenedFile file(path, O_RDWR);
  if (!file.ok()) {
    SetStatusText("Did not detect " + fileName);
    return 0;
  }
  const char* const missing = "Key not found";
  if (!ReadInto(section, key, missing, 4095, path, value)) {
    if (value == missing)
      value.clear();
    return 0;
  }
  return 1;
}

int AccessColumnProfile(int mode, const std::string& profileName, std::string& value) {
  const std::string path = GridSettingsFile();
  if (mode == kSettingWrite) {
    OpenedFile file(path, kAppend);
    if (!file.ok()) {
      ShowMessage("File Open Failed");
      return 0;
    }
    return profile::WritePrivateProfileStringA(profileName.c_str(), "COLUMNPROFILE", value.c_str(),
                                               path.c_str()) != 0;
  }
  if (mode != kSettingLoad)
    return 0;
  OpenedFile file(path, O_RDONLY);
  if (!file.ok()) {
    ShowMessage("File Open Failed");
    return 0;
  }
  return ReadInto(profileName, "COLUMNPROFILE", "Settings not found", 4096, path, value) ? 1 : 0;
}

} // namespace vh
