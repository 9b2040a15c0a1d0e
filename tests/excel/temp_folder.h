// A fresh folder per test, removed with everything in it afterwards.
#pragma once

#include <stdlib.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace vh::test {

class TempFolder {
public:
  TempFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "vh-excel-XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr)
      ADD_FAILURE() << "mkdtemp failed";
    path_ = pattern;
  }
  ~TempFolder() {
    std::error_code ec;
    std::filesystem::remove_all(path_, ec);
  }
  TempFolder(const TempFolder&) = delete;
  TempFolder& operator=(const TempFolder&) = delete;

  const std::filesystem::path& path() const { return path_; }
  std::string file(const std::string& name) const { return (path_ / name).string(); }

  // Names of the entries directly inside, sorted.
  std::vector<std::string> Entries() const {
    std::vector<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(path_))
      names.push_back(e.path().filename().string());
    std::sort(names.begin(), names.end());
    return names;
  }

private:
  std::filesystem::path path_;
};

} // namespace vh::test
