// The two settings files on a disk that refuses writes, behind writers that
// fail or stall, with something else in their place, and with contents no
// writer of ours produced: a failed save leaves the previous file whole, a
// read gives what the code promises, and the next save once the fault is
// gone works and changes nothing but its own line.
//
// The read-only disk is real: a small tmpfs in a mount namespace of this
// process alone, which only root may make; elsewhere those rows are skipped.
#include <algorithm>
#include <cerrno>
#include <iostream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "common/message.h"
#include "settings/access_setting.h"
#include "settings/column_profile.h"
#include "settings/dialog_position.h"
#include "settings/profile_io.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"

namespace {

using vh::test::ReadFile;
using vh::test::WriteFile;
namespace fs = std::filesystem;

bool MountSmallDisk(const std::string& dir) {
  static const bool isolated = ::geteuid() == 0 && ::unshare(CLONE_NEWNS) == 0 &&
                               ::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
  return isolated && ::mount("tmpfs", dir.c_str(), "tmpfs", 0, "size=65536,mode=0755") == 0;
}

// Writes half of what it is given once, then reports a full disk.
ssize_t HalfThenFull(int fd, const void* data, size_t size) {
  static bool wrote = false;
  wrote = !wrote && size > 1;
  if (wrote)
    return ::write(fd, data, size / 2);
  errno = ENOSPC;
  return -1;
}

ssize_t OneByteAtATime(int fd, const void* data, size_t size) {
  return ::write(fd, data, size > 0 ? 1 : 0);
}

// Saves the new value of the column profile or of the window placement.
bool Save(bool placement) {
  if (placement)
    return vh::WriteWindowPlacement("View-Holding", vh::sWindowPlacement{5, 0, 0, 700});
  return vh::SaveColumnProfileEntries("grid", vh::ParseColumnProfile("2,0,95", 3), 3);
}

// The value as its user reads it now, "<none>" when none.
std::string Current(bool placement) {
  std::string value = "<none>";
  if (!placement)
    return vh::AccessColumnProfile(vh::kSettingLoad, "grid", value) ? value : "<none>";
  if (const auto p = vh::ReadWindowPlacement("View-Holding"))
    value = vh::FormatWindowPlacement(*p);
  return value;
}

TEST(SettingsDisk, FaultsAndDamagedFilesLeaveEveryOtherLineWhole) {
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
  const std::string profile = "[grid]\nCOLUMNPROFILE=0,0,80,1,-1,0\n";
  const std::string placed = "[DIALOG_POSITION]\nView-Holding=10,20,300,400,-1,-1,-1,-1,1\n";
  enum Fault { None, ReadOnlyDisk, HalfWriter, ByteWriter, Directory, Fifo, ReadOnlyFile };
  const struct {
    const char* name;
    bool placement; // DialogPos.ini, else UserSetting.ini
    Fault fault;
    std::string text; // the file before; none when empty
    std::string read; // the value read with the fault on
    bool saves = false;
    std::vector<std::string> messages = {};
  } cases[] = {
      {"read-only disk",
       false,
       ReadOnlyDisk,
       profile,
       "0,0,80,1,-1,0",
       false,
       {"File Open Failed", "Error while saving column profile"}},
      {"read-only disk", true, ReadOnlyDisk, placed, "10,20,300,400,-1,-1,-1,-1,1"},
      {"writer failing half-way",
       false,
       HalfWriter,
       profile,
       "0,0,80,1,-1,0",
       false,
       {"Error while saving column profile"}},
      {"writer taking one byte at a time", true, ByteWriter, placed, "10,20,300,400,-1,-1,-1,-1,1",
       true},
      {"directory in its place",
       false,
       Directory,
       "",
       "<none>",
       false,
       {"File Open Failed", "File Open Failed", "Error while saving column profile"}},
      {"fifo in its place", true, Fifo, "", "<none>"},
      {"read-only file",
       false,
       ReadOnlyFile,
       profile,
       "0,0,80,1,-1,0",
       false,
       {"File Open Failed", "Error while saving column profile"}},
      {"read-only file", true, ReadOnlyFile, placed, "10,20,300,400,-1,-1,-1,-1,1"},
      {"cut between CR and LF", false, None, "[grid]\r\nCOLUMNPROFILE=1\r", "1", true},
      {"NULs inside values", false, None, std::string("[grid]\na=x\0y\nCOLUMNPROFILE=x\0y\n", 31),
       std::string("x\0y", 3), true},
      {"noise then the value", false, None, noise + "\n[grid]\nCOLUMNPROFILE=1,1,1\n", "1,1,1",
       true},
      {"4 MB with the value last", false, None, huge + "[grid]\nCOLUMNPROFILE=0,0,80\n", "0,0,80",
       true},
      {"value over 4 KB is cut", false, None, "[grid]\nCOLUMNPROFILE=" + longLine + "\n",
       longLine.substr(0, 4095), true},
      {"placement padded past 4 KB", true, None,
       "[DIALOG_POSITION]\nView-Holding=1,2,3,4,5,6,7,8,1" + std::string(5000, ' '),
       "1,2,3,4,5,6,7,8,1", true},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    vh::test::TempDir dir;
    const std::string path = dir.file(c.placement ? "DialogPos.ini" : "UserSetting.ini");
    if (c.fault == ReadOnlyDisk && !MountSmallDisk(dir.path())) {
      std::cout << "skipped (no private tmpfs here): " << c.name << "\n";
      continue;
    }
    vh::ScopedSettingsPaths paths({dir.path().string(), dir.path().string()});
    if (!c.text.empty())
      WriteFile(path, c.text);
    // Turns the fault on or off; false when that did not work.
    auto fault = [&](bool on) {
      switch (c.fault) {
      case None:
        return true;
      case ReadOnlyDisk:
        return ::mount("tmpfs", dir.path().c_str(), "tmpfs", MS_REMOUNT | (on ? MS_RDONLY : 0),
                       nullptr) == 0;
      case HalfWriter:
      case ByteWriter:
        profile::detail::SetWriteFunctionForTesting(!on                     ? nullptr
                                                    : c.fault == HalfWriter ? HalfThenFull
                                                                            : OneByteAtATime);
        return true;
      case Directory:
        return on ? fs::create_directory(path) : fs::remove(path);
      case Fifo:
        return on ? ::mkfifo(path.c_str(), 0644) == 0 : fs::remove(path);
      case ReadOnlyFile: // a replaced file keeps the mode it has
        return ::chmod(path.c_str(), on ? 0444 : 0640) == 0;
      }
      return false;
    };
    ASSERT_TRUE(fault(true));
    const fs::file_type type = fs::symlink_status(path).type();
    {
      vh::ScopedMessageRecorder recorder;
      EXPECT_EQ(Current(c.placement), c.read);
      EXPECT_EQ(Save(c.placement), c.saves);
      EXPECT_EQ(recorder.messages(), c.messages);
    }
    EXPECT_EQ(fs::symlink_status(path).type(), type) << "the save replaced what it refused";
    if (!c.saves && type == fs::file_type::regular) {
      EXPECT_EQ(ReadFile(path), c.text) << "the previous file was touched";
    }
    EXPECT_EQ(std::distance(fs::directory_iterator(dir.path()), {}),
              type == fs::file_type::not_found ? 0 : 1)
        << "temporary file left behind";
    ASSERT_TRUE(fault(false));
    struct stat st {};
    const mode_t mode = ::stat(path.c_str(), &st) == 0 ? st.st_mode & 0777 : 0644;
    EXPECT_TRUE(c.saves || Save(c.placement)) << "no save once the fault is gone";
    EXPECT_EQ(Current(c.placement), c.placement ? "5,0,0,700,-1,-1,-1,-1,1" : "2,0,95");
    ASSERT_EQ(::stat(path.c_str(), &st), 0);
    EXPECT_EQ(st.st_mode & 0777, mode);
    // Whatever the saves changed, they changed in one place: the old text is
    // a prefix and a suffix of the new one, with only the edit between.
    const std::string after = ReadFile(path);
    const auto [oldFrom, newFrom] =
        std::mismatch(c.text.begin(), c.text.end(), after.begin(), after.end());
    const auto [oldTo, newTo] = std::mismatch(c.text.rbegin(), std::make_reverse_iterator(oldFrom),
                                              after.rbegin(), std::make_reverse_iterator(newFrom));
    EXPECT_EQ(std::find(oldFrom, oldTo.base(), '\n'), oldTo.base())
        << "a line beside the edited one was lost";
    EXPECT_LE(newTo.base() - newFrom, oldTo.base() - oldFrom + 64);
    if (c.fault == ReadOnlyDisk)
      ::umount2(dir.path().c_str(), MNT_DETACH);
  }
}

} // namespace
