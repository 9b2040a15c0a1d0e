// Reads back the first sheet of an .xlsx file with the unzip tool.
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <regex>
#include <string>

namespace vh::test {

// A cell as the file holds it: a number (its text as written) or a string.
struct SheetCell {
  bool number = false;
  std::string text;
  bool operator==(const SheetCell&) const = default;
};
using Sheet = std::map<std::string, SheetCell>; // by reference, "A1"

inline std::string Unzip(const std::string& file, const std::string& member) {
  const std::string command = "unzip -p '" + file + "' '" + member + "' 2>/dev/null";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  std::string out;
  char buf[65536];
  for (size_t n; pipe && (n = std::fread(buf, 1, sizeof buf, pipe.get())) > 0;)
    out.append(buf, n);
  return out;
}

// The sheet's numbers and inline strings (the streamed form writes no shared
// strings), as written (entities not decoded).
inline Sheet ReadSheet(const std::string& file) {
  static const std::regex cell(
      R"re(<c r="([A-Z]+\d+)"[^>]*>(?:<v>([^<]*)</v>|<is><t[^>]*>([^<]*)</t></is>)</c>)re");
  const std::string xml = Unzip(file, "xl/worksheets/sheet1.xml");
  Sheet sheet;
  for (std::sregex_iterator it(xml.begin(), xml.end(), cell), end; it != end; ++it) {
    const bool number = (*it)[2].matched;
    sheet[(*it)[1].str()] = {number, (*it)[number ? 2 : 3].str()};
  }
  return sheet;
}

} // namespace vh::test
