// UserSetting.ini and DialogPos.ini on a disk that refuses writes, and with
// contents no writer of ours produced: every failed save leaves the previous
// file whole, and the next save after the fault is gone works.
//
// The read-only disk is real: a small tmpfs mounted in a private mount
// namespace of the test process. Where the kernel refuses such a namespace
// those cases are skipped; the injected writer runs everywhere.
#include <cerrno>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <optional>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/access_setting.h"
#include "settings/dialog_position.h"
#include "settings/profile_io.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WriteFile;

bool WriteAll(const std::string& path, const std::string& text) {
  const int fd = ::open(path.c_str(), O_WRONLY);
  if (fd < 0)
    return false;
  const bool ok = ::write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
  ::close(fd);
  return ok;
}

// Root keeps root; anyone else maps themselves to root of a new user
// namespace, which may then mount. False when the kernel forbids either.
bool EnterPrivateMountNamespace() {
  static const bool entered = [] {
    const uid_t uid = ::geteuid();
    const gid_t gid = ::getegid();
    if (uid == 0) {
      if (::unshare(CLONE_NEWNS) != 0)
        return false;
    } else {
      if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0)
        return false;
      if (!WriteAll("/proc/self/setgroups", "deny") ||
          !WriteAll("/proc/self/uid_map", "0 " + std::to_string(uid) + " 1") ||
          !WriteAll("/proc/self/gid_map", "0 " + std::to_string(gid) + " 1"))
        return false;
    }
    // Mounts made here must not reach the rest of the machine.
    return ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  }();
  return entered;
}

// A small tmpfs over `dir` for the lifetime of the object.
class SmallDisk {
public:
  explicit SmallDisk(const std::string& dir) : dir_(dir) {
    mounted_ = EnterPrivateMountNamespace() &&
               ::mount("tmpfs", dir.c_str(), "tmpfs", 0, "size=65536,mode=0755") == 0;
  }
  ~SmallDisk() {
    if (mounted_)
      ::umount2(dir_.c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  bool mounted() const { return mounted_; }
  bool SetReadOnly(bool readOnly) {
    const unsigned long flags = MS_REMOUNT | (readOnly ? MS_RDONLY : 0);
    return ::mount("tmpfs", dir_.c_str(), "tmpfs", flags, nullptr) == 0;
  }

private:
  std::string dir_;
  bool mounted_ = false;
};

// Writes half of what it is given once, then reports a full disk.
ssize_t HalfThenFull(int fd, const void* data, size_t size) {
  static bool wrote = false;
  if (!wrote && size > 1) {
    wrote = true;
    return ::write(fd, data, size / 2);
  }
  wrote = false;
  errno = ENOSPC;
  return -1;
}

// What the two settings files look like to their users.
struct SettingsFile {
  const char* name;
  std::string before;                   // the file on disk before the save
  std::function<int()> save;            // 1 when the save reports success
  std::function<std::string()> current; // the saved value as read back now
  std::string oldValue;
  std::string newValue;
};

SettingsFile UserSettings() {
  return {"UserSetting.ini",
          "[grid]\nCOLUMNPROFILE=0,0,80,1,-1,0\n",
          [] {
            std::string value = "2,0,95";
            return vh::AccessColumnProfile(vh::kSettingWrite, "grid", value);
          },
          [] {
            std::string value;
            return vh::AccessColumnProfile(vh::kSettingLoad, "grid", value) ? value : "<none>";
          },
          "0,0,80,1,-1,0",
          "2,0,95"};
}

SettingsFile DialogPositions() {
  vh::sWindowPlacement placement;
  placement.normalTop = 5;
  placement.normalRight = 700;
  return {"DialogPos.ini",
          "[DIALOG_POSITION]\nView-Holding=10,20,300,400,-1,-1,-1,-1,1\n",
          [placement] { return vh::WriteWindowPlacement("View-Holding", placement) ? 1 : 0; },
          [] {
            const auto p = vh::ReadWindowPlacement("View-Holding");
            return p ? vh::FormatWindowPlacement(*p) : "<none>";
          },
          "10,20,300,400,-1,-1,-1,-1,1",
          vh::FormatWindowPlacement(placement)};
}

class SettingsDisk : public ::testing::Test {
protected:
  TempDir top_;
  std::string dir_ = top_.file("settings");
  void SetUp() override { ASSERT_TRUE(std::filesystem::create_directory(dir_)); }
};

// A full disk and a writer cut off half-way fail the same write; the
// injected writer stands for both.
TEST_F(SettingsDisk, FailedSavesLeaveThePreviousFileAndTheNextSaveWorks) {
  const struct {
    const char* name;
    bool readOnly; // else the writer fails half-way
    SettingsFile file;
    bool missing = false;                   // no file before the save
    std::vector<std::string> messages = {}; // shown by the failed save (and a load)
  } cases[] = {
      {"read-only, UserSetting.ini", true, UserSettings(), false, {"File Open Failed"}},
      {"read-only, DialogPos.ini", true, DialogPositions()},
      {"read-only, UserSetting.ini missing",
       true,
       UserSettings(),
       true,
       {"File Open Failed", "File Open Failed"}},
      {"read-only, DialogPos.ini missing", true, DialogPositions(), true},
      {"writer failing half-way, UserSetting.ini", false, UserSettings()},
      {"writer failing half-way, DialogPos.ini", false, DialogPositions()},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::optional<SmallDisk> disk;
    if (c.readOnly) {
      disk.emplace(dir_);
      if (!disk->mounted()) {
        std::cout << "skipped (no private tmpfs here): " << c.name << "\n";
        continue;
      }
    }
    vh::ScopedSettingsPaths paths({dir_, dir_});
    const std::string path = dir_ + "/" + c.file.name;
    const std::string before = c.missing ? "" : c.file.before;
    const std::string oldValue = c.missing ? "<none>" : c.file.oldValue;
    if (!c.missing)
      WriteFile(path, before);

    // Turns the fault on or off; false when that did not work.
    auto fault = [&](bool on) {
      if (c.readOnly)
        return disk->SetReadOnly(on);
      profile::detail::SetWriteFunctionForTesting(on ? HalfThenFull : nullptr);
      return true;
    };
    ASSERT_TRUE(fault(true));
    {
      vh::ScopedMessageRecorder recorder;
      EXPECT_EQ(c.file.save(), 0);
      EXPECT_EQ(c.file.current(), oldValue);
      EXPECT_EQ(recorder.messages(), c.messages);
      EXPECT_EQ(ReadFile(path), before) << "the previous file was touched";
      EXPECT_EQ(std::filesystem::exists(path), !c.missing);
      EXPECT_EQ(vh::test::CountOtherFiles(dir_, c.file.name), 0) << "temporary file left behind";
    }
    ASSERT_TRUE(fault(false));
    EXPECT_EQ(c.file.save(), 1) << "no save once the fault is gone";
    EXPECT_EQ(c.file.current(), c.file.newValue);
    disk.reset();
    std::filesystem::remove(path);
  }
}

// Files cut short, overwritten with noise, grown huge, or with lines longer
// than any read buffer: reading gives what the code promises, and a save
// afterwards adds its line without tearing anything else.
TEST_F(SettingsDisk, DamagedFilesReadSafelyAndSurviveTheNextSave) {
  std::string noise;
  uint32_t state = 12345;
  for (int i = 0; i < 3000; ++i) {
    state = state * 1103515245u + 12345u;
    noise += static_cast<char>(state >> 24); // NULs, CRs, '[' and '=' included
  }
  std::string huge;
  while (huge.size() < 4u << 20)
    huge += "[S" + std::to_string(huge.size()) + "]\nk=" + std::string(200, 'h') + "\n";
  const std::string longLine(5000, '7');
  const std::string nul("[grid]\na=x\0y\nCOLUMNPROFILE=x\0y\n", 31);

  const std::string position = "[DIALOG_POSITION]\nView-Holding=";
  const struct {
    const char* name;
    bool user; // UserSetting.ini, else DialogPos.ini
    std::string text;
    std::string read; // the value read back, "<none>" when none
  } cases[] = {
      {"cut inside the value", true, "[grid]\nCOLUMNPROFILE=0,0,8", "0,0,8"},
      {"cut inside the key", true, "[grid]\nCOLUMNPROF", "<none>"},
      {"cut inside the header", true, "[x]\nk=1\n[gri", "<none>"},
      {"cut between CR and LF", true, "[grid]\r\nCOLUMNPROFILE=1\r", "1"},
      {"NULs inside values", true, nul, std::string("x\0y", 3)},
      {"value after a long line", true, "[grid]\nk=" + longLine + "\nCOLUMNPROFILE=1\n", "1"},
      {"noise then the value", true, noise + "\n[grid]\nCOLUMNPROFILE=1,1,1\n", "1,1,1"},
      {"4 MB with the value last", true, huge + "[grid]\nCOLUMNPROFILE=0,0,80\n", "0,0,80"},
      {"value over 4 KB is cut", true, "[grid]\nCOLUMNPROFILE=" + longLine + "\n",
       longLine.substr(0, 4095)},
      {"placement cut inside the value", false, position + "10,20,300,4", "<none>"},
      {"placement padded past 4 KB", false, position + "1,2,3,4,5,6,7,8,1" + std::string(5000, ' '),
       "1,2,3,4,5,6,7,8,1"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    vh::ScopedSettingsPaths paths({dir_, dir_});
    const SettingsFile file = c.user ? UserSettings() : DialogPositions();
    const std::string path = dir_ + "/" + file.name;
    WriteFile(path, c.text);
    {
      vh::ScopedMessageRecorder recorder;
      EXPECT_EQ(file.current(), c.read);
      EXPECT_TRUE(recorder.messages().empty());
    }
    ASSERT_EQ(file.save(), 1);
    EXPECT_EQ(file.current(), file.newValue);
    // Whatever the save changed, it changed in one place: the old text is
    // a prefix and a suffix of the new one, with only the edit between.
    const std::string after = ReadFile(path);
    size_t prefix = 0;
    while (prefix < c.text.size() && prefix < after.size() && c.text[prefix] == after[prefix])
      ++prefix;
    size_t suffix = 0;
    while (suffix < c.text.size() - prefix && suffix < after.size() - prefix &&
           c.text[c.text.size() - 1 - suffix] == after[after.size() - 1 - suffix])
      ++suffix;
    const std::string removed = c.text.substr(prefix, c.text.size() - prefix - suffix);
    const std::string added = after.substr(prefix, after.size() - prefix - suffix);
    EXPECT_EQ(removed.find('\n'), std::string::npos) << "a line beside the edited one was lost";
    EXPECT_LE(added.size(), removed.size() + file.newValue.size() + 64);
    EXPECT_EQ(vh::test::CountOtherFiles(dir_, file.name), 0);
    std::filesystem::remove(path);
  }
}

} // namespace
