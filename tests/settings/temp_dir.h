// A fresh directory per test, removed afterwards, whole-file helpers, and a
// profile read for tests that check a value rather than the file's bytes;
// the grid, dialog and back-end tests use them too.
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

#include "settings/profile.h"

namespace vh::test {

class TempDir {
public:
  TempDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vh-settings-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
      ADD_FAILURE() << "mkdtemp failed";
    path_ = pattern;
  }
  ~TempDir() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
  std::filesystem::path path_;
};

inline void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << content;
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

// The value of `key` in `section` of `file`, "<default>" when absent, read
// through a buffer of `size` bytes.
inline std::string Get(const char* section, const char* key, const std::string& file,
                       uint32_t size = 256) {
  std::string buf(size, '\0');
  const uint32_t n =
      profile::GetPrivateProfileStringA(section, key, "<default>", buf.data(), size, file.c_str());
  return buf.substr(0, n);
}

} // namespace vh::test
