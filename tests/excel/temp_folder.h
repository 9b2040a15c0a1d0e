// A fresh folder per test, removed with its contents afterwards.
#pragma once

#include <stdlib.h>

#include <filesystem>
#include <set>
#include <string>

namespace vh::test {

struct TempFolder {
  std::filesystem::path path = [] {
    std::string pattern = (std::filesystem::temp_directory_path() / "vh-test-XXXXXX").string();
    return ::mkdtemp(pattern.data()) ? pattern : std::string("/nonexistent");
  }();
  ~TempFolder() { std::filesystem::remove_all(path, ec); }
  std::string file(const std::string& name) const { return (path / name).string(); }
  std::set<std::string> Entries() const {
    std::set<std::string> names;
    for (const auto& e : std::filesystem::directory_iterator(path))
      names.insert(e.path().filename().string());
    return names;
  }
  std::error_code ec;
};

} // namespace vh::test
