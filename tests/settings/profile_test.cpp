// Reading and writing single values of an INI file: the line rules over a
// fixture in each of the three line breaks a file may use, how a caller's
// buffer is filled, where edits land, and what a fault on the way to the
// disk leaves behind.
#include <cerrno>
#include <iostream>
#include <random>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include <gtest/gtest.h>

#include "settings/profile.h"
#include "settings/profile_io.h"
#include "tests/settings/temp_dir.h"

namespace {

using namespace std::string_literals;
using vh::test::ReadFile;
using vh::test::TempDir;
using vh::test::WriteFile;

std::string WithBreaks(const std::string& text, const std::string& lineBreak) {
  std::string out;
  for (char c : text)
    c == '\n' ? out.append(lineBreak) : out.append(1, c);
  return out;
}

int Put(const char* section, const char* key, const char* value, const std::string& file) {
  return profile::WritePrivateProfileStringA(section, key, value, file.c_str());
}

// Every row over the fixture in each of the three line breaks. A null key
// lists the keys of a section, a null section every section.
TEST(ProfileRead, ValuesAndListsFillTheBufferByTheLineRules) {
  const struct {
    const char* name;
    const char* section;
    const char* key;
    std::string bytes; // the buffer up to its final NUL
    uint32_t size = 256;
    const char* def = "<default>";
    int count = -1; // the result, when not bytes.size()
  } cases[] = {
      {"caller spaces around names dropped", "  General ", " Plain  ", "value"},
      {"blanks around key and value dropped", "General", "Spaced", "padded value"},
      {"tabs around value dropped", "General", "Tabbed", "tab value"},
      {"double quotes removed, inner blanks kept", "General", "DQuoted", " keep inner blanks "},
      {"single quotes removed", "General", "SQuoted", "single"},
      {"unmatched quotes kept", "General", "Mixed", "\"open'"},
      {"a lone quote stays", "General", "Lone", "\""},
      {"line without = is no key", "General", "Bare line", "<default>"},
      {"comment, indented or not, is no key", "General", ";Indented", "<default>"},
      {"first duplicate key wins", "General", "Dup", "first"},
      {"names ignore case, first duplicate section wins", "general", "PLAIN", "value"},
      {"lines before the first section are in none", "", "orphan", "<default>"},
      {"blanks inside brackets and text after them ignored", "Padded Section", "Key", "in padded"},
      {"header without closing bracket", "NoClose", "Key", "in unclosed"},
      {"last line without a break", "Last", "Final", "no line break"},
      {"no room at all", "General", "Plain", "", 0},
      {"value cut to size-1", "General", "Plain", "valu", 5},
      {"default's trailing spaces trimmed", "General", "none", "dflt", 9, "dflt  "},
      {"null default is empty", "General", "none", "", 9, nullptr},
      {"every section, duplicates included", nullptr, "k",
       "General\0general\0Padded Section\0NoClose\0Last\0"s},
      {"keys of the first section only, no bare line", "general", nullptr,
       "Plain\0Spaced\0Tabbed\0DQuoted\0SQuoted\0Mixed\0Inner\0Twice\0Lone\0Empty\0Semi\0Hash#\0"
       "Dup\0Dup\0"s},
      {"list cut to size-2 and two NULs", nullptr, "k", "G\0"s, 3, "", 1},
      {"list in one byte", nullptr, "k", "", 1, "", 0},
      {"no keys: two NULs", "Nowhere", nullptr, "\0"s, 8, "", 0},
  };
  TempDir dir;
  const std::string file = dir.file("read_rules.ini");
  for (const char* lineBreak : {"\n", "\r\n", "\r"}) {
    SCOPED_TRACE(lineBreak[0] == '\n' ? "LF" : lineBreak[1] ? "CR LF" : "CR");
    WriteFile(file, WithBreaks(ReadFile(VH_SETTINGS_FIXTURES "/read_rules.ini"), lineBreak));
    for (const auto& c : cases) {
      std::vector<char> buf(c.size + 4, '#');
      const uint32_t n = profile::GetPrivateProfileStringA(c.section, c.key, c.def, buf.data(),
                                                           c.size, file.c_str());
      const std::string expected = c.size ? c.bytes + '\0' : "";
      EXPECT_EQ(n, c.count < 0 ? c.bytes.size() : size_t(c.count)) << c.name;
      EXPECT_EQ(std::string(buf.data(), expected.size()), expected) << c.name;
      EXPECT_EQ(buf[c.size], '#') << c.name << ": wrote past the buffer";
    }
  }
}

// Edits over a file with comments, blank lines and a duplicate section,
// compared byte for byte with the golden file.
TEST(ProfileWrite, EditsLandWhereExpectedAndTheRestStays) {
  TempDir dir;
  const std::string file = dir.file("w.ini");
  WriteFile(file, WithBreaks(ReadFile(VH_SETTINGS_FIXTURES "/write_base.ini"), "\r\n"));
  EXPECT_EQ(Put("a", "ONE", "uno", file), 1);
  EXPECT_EQ(Put("A", "two", "2", file), 1);
  EXPECT_EQ(Put("B", "k", "v", file), 1);
  EXPECT_EQ(Put("C", "x", " spaced ", file), 1);
  EXPECT_EQ(Put("New", "k", "v", file), 1);
  EXPECT_EQ(Put("A", "one", nullptr, file), 1);
  EXPECT_EQ(Put("B", nullptr, nullptr, file), 1);
  EXPECT_EQ(ReadFile(file),
            WithBreaks(ReadFile(VH_SETTINGS_FIXTURES "/write_base.golden"), "\r\n"));
}

// A small tmpfs over `dir` in a mount namespace of this process alone,
// which only root may make.
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

// Every line written ends with CR LF, whatever the file's other lines use.
// A fault on the way to the disk (a real read-only tmpfs where one can be
// mounted, else that row is skipped), a failing or stalling writer, or
// something else in the file's place: the write is refused and leaves what
// was there, and once the fault is gone the same write gives `after` and
// keeps the file's mode.
TEST(ProfileWrite, EditsRefusalsAndFaults) {
  std::mt19937 random(12345);
  std::string noise(3000, '\0');
  for (char& c : noise)
    c = static_cast<char>(random()); // NULs, CRs, '[' and '=' included
  enum Fault { None, ReadOnlyDisk, HalfWriter, ByteWriter, Fifo, ReadOnlyFile };
  const std::string start = "[S]\nk=1\n";
  const std::string two = "[S]\nk=2\r\n";
  const struct {
    const char* name;
    std::string before; // empty: no file
    const char* section;
    const char* key;
    const char* value;
    std::string after;
    int result = 1; // with the fault on
    Fault fault = None;
  } cases[] = {
      {"new key after a last line without break", "[S]\nk=1", "S", "n", "2", "[S]\nk=1\r\nn=2\r\n"},
      {"a final CR is a break already", "[S]\r\nk=1\r", "S", "n", "2", "[S]\r\nk=1\rn=2\r\n"},
      {"CR-only file: key found and replaced", "[S]\rk=1\rm=2\r", "S", "k", "9",
       "[S]\rk=9\r\nm=2\r"},
      {"replaced last line gets a break", "[S]\nk=1", "S", "k", "9", "[S]\nk=9\r\n"},
      {"new section after a last line without break", "[S]\r\nk=1", "T", "n", "2",
       "[S]\r\nk=1\r\n[T]\r\nn=2\r\n"},
      {"caller spaces dropped from names", "", "  S ", " k ", "v", "[S]\r\nk=v\r\n"},
      {"line without = is no key: a new one follows it", "[S]\nflag\n", "S", "flag", "1",
       "[S]\nflag\nflag=1\r\n"},
      {"keyless section: after its comment, before its blank", "[S]\n;c\n\n[T]\n", "S", "k", "v",
       "[S]\n;c\nk=v\r\n\n[T]\n"},
      {"comment key written as a comment line", "[S]\r\na=1\r\n;c=old\r\n", "S", ";c", "v",
       "[S]\r\na=1\r\n;c=v\r\n;c=old\r\n"},
      {"comment key deletion changes nothing", "[S]\n;c=v\n", "S", ";c", nullptr, "[S]\n;c=v\n"},
      {"key deletion in a missing file leaves it empty", "", "S", "k", nullptr, ""},
      {"section deletion in a missing file leaves it empty", "", "S", nullptr, nullptr, ""},
      {"noise before the section", noise + "\n" + start, "S", "k", "2", noise + "\n" + two},
      {"break in value", start, "S", "k", "a\nb", start, 0},
      {"carriage return in key", start, "S", "k\rj", "v", start, 0},
      {"break in section", start, "S\n", "k", "v", start, 0},
      {"no section", start, nullptr, "k", "v", start, 0},
      {"bracket in section", start, "S]x", "k", "v", start, 0},
      {"tab around section", start, "S\t", "k", "v", start, 0},
      {"equals in key", start, "S", "k=j", "v", start, 0},
      {"key that reads as a header", start, "S", "[k", "v", start, 0},
      {"tab around key", start, "S", "\tk", "v", start, 0},
      {"read-only disk", start, "S", "k", "2", two, 0, ReadOnlyDisk},
      {"writer failing half-way", start, "S", "k", "2", two, 0, HalfWriter},
      {"writer taking one byte at a time", start, "S", "k", "2", two, 1, ByteWriter},
      {"fifo in its place", "", "S", "k", "2", "[S]\r\nk=2\r\n", 0, Fifo},
      {"read-only file", start, "S", "k", "2", two, 0, ReadOnlyFile},
  };
  for (const auto& c : cases) {
    TempDir dir;
    const std::string file = dir.file("s.ini");
    if (c.fault == ReadOnlyDisk && !MountSmallDisk(dir.path())) {
      std::cout << "skipped (no private tmpfs here): " << c.name << "\n";
      continue;
    }
    if (!c.before.empty())
      WriteFile(file, c.before);
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
      case Fifo: // not a file, and a plain open would block on it
        return on ? ::mkfifo(file.c_str(), 0644) == 0 : std::filesystem::remove(file);
      case ReadOnlyFile: // a replaced file keeps the mode it has
        return ::chmod(file.c_str(), on ? 0444 : 0640) == 0;
      }
      return false;
    };
    ASSERT_TRUE(fault(true)) << c.name;
    const auto type = std::filesystem::symlink_status(file).type();
    EXPECT_EQ(Put(c.section, c.key, c.value, file), c.result) << c.name;
    if (c.result == 0) {
      EXPECT_EQ(std::filesystem::symlink_status(file).type(), type) << c.name;
      EXPECT_TRUE(type != std::filesystem::file_type::regular || ReadFile(file) == c.before)
          << c.name << ": the refused write touched the file";
    }
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(dir.path()), {}),
              std::filesystem::exists(std::filesystem::symlink_status(file)) ? 1 : 0)
        << c.name << ": temporary file left behind";
    ASSERT_TRUE(fault(false)) << c.name;
    struct stat st {};
    const mode_t mode = ::stat(file.c_str(), &st) == 0 ? st.st_mode & 0777 : 0644;
    if (c.fault != None && c.result == 0) {
      EXPECT_EQ(Put(c.section, c.key, c.value, file), 1) << c.name << ": refused after the fault";
    }
    EXPECT_EQ(ReadFile(file), c.after) << c.name;
    ASSERT_EQ(::stat(file.c_str(), &st), 0) << c.name;
    EXPECT_EQ(st.st_mode & 0777, mode) << c.name;
    if (c.fault == ReadOnlyDisk)
      ::umount2(dir.path().c_str(), MNT_DETACH);
  }
  EXPECT_EQ(profile::WritePrivateProfileStringA("S", "k", "v", nullptr), 0);
}

} // namespace
