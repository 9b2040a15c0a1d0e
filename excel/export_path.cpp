#include "excel/export_path.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

namespace vh {
namespace {

bool IsFolder(const std::string& path) {
  std::error_code ec;
  return !path.empty() && std::filesystem::is_directory(path, ec);
}

// The value of XDG_DOCUMENTS_DIR in a user-dirs.dirs file: a shell
// assignment of a double-quoted path that is absolute or starts with
// "$HOME/". Returns "" when the line is missing or has another form.
std::string ReadDocumentsEntry(const std::string& file, const std::string& home) {
  static constexpr std::string_view kKey = "XDG_DOCUMENTS_DIR=";
  std::ifstream in(file);
  std::string line;
  std::string found;
  while (std::getline(in, line)) {
    const size_t start = line.find_first_not_of(" \t");
    if (start == std::string::npos || line.compare(start, kKey.size(), kKey) != 0)
      continue;
    std::string value = line.substr(start + kKey.size());
    while (!value.empty() && (value.back() == '\r' || value.back() == ' ' || value.back() == '\t'))
      value.pop_back();
    if (value.size() < 2 || value.front() != '"' || value.back() != '"') {
      found.clear();
      continue;
    }
    value = value.substr(1, value.size() - 2);
    if (value.rfind("$HOME", 0) == 0 && (value.size() == 5 || value[5] == '/'))
      found = home + value.substr(5);
    else if (!value.empty() && value.front() == '/')
      found = value;
    else
      found.clear();
  }
  return found; // the last assignment wins, as when the shell reads it
}

bool IsForbiddenByte(unsigned char c) {
  static constexpr std::string_view kForbidden = "/\\:*?\"<>|";
  return c < 0x20 || c == 0x7F || kForbidden.find(static_cast<char>(c)) != std::string_view::npos;
}

bool IsTrimmed(char c) {
  return c == ' ' || c == '.';
}

std::string Stamp(std::time_t when) {
  std::tm local{};
  if (localtime_r(&when, &local) == nullptr)
    return "00000000_000000";
  char buf[32];
  std::strftime(buf, sizeof buf, "%Y%m%d_%H%M%S", &local);
  return buf;
}

} // namespace

std::string SafeFileStem(std::string_view name) {
  std::string stem;
  for (char c : name)
    stem += IsForbiddenByte(static_cast<unsigned char>(c)) ? '_' : c;
  size_t first = 0;
  while (first < stem.size() && IsTrimmed(stem[first]))
    ++first;
  stem.erase(0, first);
  while (!stem.empty() && IsTrimmed(stem.back()))
    stem.pop_back();
  if (stem.size() > kMaxExportStemBytes) {
    size_t cut = kMaxExportStemBytes;
    // Back up over continuation bytes so no character is split.
    while (cut > 0 && (static_cast<unsigned char>(stem[cut]) & 0xC0) == 0x80)
      --cut;
    stem.resize(cut);
    while (!stem.empty() && IsTrimmed(stem.back()))
      stem.pop_back();
  }
  return stem.empty() ? std::string(kDefaultExportStem) : stem;
}

std::string DocumentsFolderFor(const std::string& home, const std::string& configHome) {
  const std::string config = configHome.empty() ? home + "/.config" : configHome;
  const std::string fromUserDirs = ReadDocumentsEntry(config + "/user-dirs.dirs", home);
  if (IsFolder(fromUserDirs))
    return fromUserDirs;
  const std::string documents = home + "/Documents";
  if (IsFolder(documents))
    return documents;
  return home;
}

std::string DocumentsFolder() {
  std::string home;
  if (const char* env = std::getenv("HOME"); env && *env) {
    home = env;
  } else if (const passwd* pw = getpwuid(getuid()); pw && pw->pw_dir) {
    home = pw->pw_dir;
  }
  if (home.empty())
    return ".";
  const char* config = std::getenv("XDG_CONFIG_HOME");
  // A relative XDG_CONFIG_HOME is invalid and must be ignored.
  const std::string configHome = config && config[0] == '/' ? config : "";
  return DocumentsFolderFor(home, configHome);
}

std::string DefaultExportPath(const std::string& folder, std::string_view baseName,
                              std::time_t when) {
  static constexpr int kMaxSuffix = 999;
  const std::string head = folder + "/" + SafeFileStem(baseName) + "_" + Stamp(when);
  std::string path = head + ".xlsx";
  std::error_code ec;
  for (int n = 2; n <= kMaxSuffix && std::filesystem::exists(path, ec); ++n)
    path = head + "_" + std::to_string(n) + ".xlsx";
  return path;
}

} // namespace vh
