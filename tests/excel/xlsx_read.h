// Reads back the first sheet of an .xlsx file with the unzip tool, for tests
// that check what an export really wrote.
#pragma once

#include <cstdio>
#include <map>
#include <memory>
#include <regex>
#include <string>
#include <vector>

namespace vh::test {

// One cell as the file holds it: a number (`number` true, `text` its value
// as written) or a string (inline or shared).
struct SheetCell {
  bool number = false;
  std::string text;
  bool operator==(const SheetCell&) const = default;
};

// Cells by reference ("A1", "B2", ...).
using Sheet = std::map<std::string, SheetCell>;

// Standard output of `unzip -p <file> <member>`; empty when either is missing.
inline std::string UnzipMember(const std::string& file, const std::string& member) {
  const std::string command = "unzip -p '" + file + "' '" + member + "' 2>/dev/null";
  std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
  std::string out;
  if (!pipe)
    return out;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, pipe.get())) > 0)
    out.append(buf, n);
  return out;
}

inline std::string XmlUnescape(std::string s) {
  static const std::pair<const char*, const char*> kEntities[] = {
      {"&lt;", "<"}, {"&gt;", ">"}, {"&quot;", "\""}, {"&apos;", "'"}, {"&amp;", "&"}};
  for (const auto& [from, to] : kEntities) {
    const std::string f(from);
    for (size_t at = s.find(f); at != std::string::npos; at = s.find(f, at + 1))
      s.replace(at, f.size(), to);
  }
  return s;
}

// The text of every <t> element inside `xml`, concatenated.
inline std::string TextRuns(const std::string& xml) {
  static const std::regex run(R"(<t(?: [^>]*)?>([^<]*)</t>)");
  std::string text;
  for (std::sregex_iterator it(xml.begin(), xml.end(), run), end; it != end; ++it)
    text += XmlUnescape((*it)[1].str());
  return text;
}

inline Sheet ReadSheet(const std::string& file) {
  std::vector<std::string> shared;
  const std::string sst = UnzipMember(file, "xl/sharedStrings.xml");
  static const std::regex si(R"(<si>([\s\S]*?)</si>)");
  for (std::sregex_iterator it(sst.begin(), sst.end(), si), end; it != end; ++it)
    shared.push_back(TextRuns((*it)[1].str()));

  Sheet sheet;
  const std::string xml = UnzipMember(file, "xl/worksheets/sheet1.xml");
  static const std::regex cell(R"re(<c r="([A-Z]+[0-9]+)"([^>]*?)(?:/>|>([\s\S]*?)</c>))re");
  static const std::regex value(R"(<v>([^<]*)</v>)");
  for (std::sregex_iterator it(xml.begin(), xml.end(), cell), end; it != end; ++it) {
    const std::string attrs = (*it)[2].str();
    const std::string body = (*it)[3].str();
    std::smatch v;
    const bool hasValue = std::regex_search(body, v, value);
    SheetCell c;
    if (attrs.find("t=\"inlineStr\"") != std::string::npos) {
      c.text = TextRuns(body);
    } else if (attrs.find("t=\"s\"") != std::string::npos && hasValue) {
      const size_t index = std::stoul(v[1].str());
      c.text = index < shared.size() ? shared[index] : "<bad shared index>";
    } else if (attrs.find("t=\"str\"") != std::string::npos && hasValue) {
      c.text = XmlUnescape(v[1].str());
    } else if (hasValue) {
      c.number = true;
      c.text = v[1].str();
    } else {
      continue; // a styled blank
    }
    sheet[(*it)[1].str()] = c;
  }
  return sheet;
}

} // namespace vh::test
