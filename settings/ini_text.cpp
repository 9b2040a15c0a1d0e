#include "settings/ini_text.h"

#include <algorithm>

namespace profile::detail {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t' || c == '\v';
}

std::string_view TrimBlanks(std::string_view s) {
  while (!s.empty() && IsBlank(s.front()))
    s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back()))
    s.remove_suffix(1);
  return s;
}

bool HasOuterBlank(std::string_view name) {
  return !name.empty() && (IsBlank(name.front()) || IsBlank(name.back()));
}

char Lower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

void Classify(std::string_view content, Line& line) {
  std::string_view rest = content;
  while (!rest.empty() && IsBlank(rest.front()))
    rest.remove_prefix(1);
  if (rest.empty()) {
    line.kind = LineKind::Blank;
  } else if (rest.front() == '[') {
    rest.remove_prefix(1);
    // Text after the closing bracket is ignored; a header without one ends
    // at the line break.
    line.kind = LineKind::Section;
    line.name = TrimBlanks(rest.substr(0, rest.find(']')));
  } else if (rest.front() == ';') {
    line.kind = LineKind::Comment;
  } else if (size_t eq = rest.find('='); eq != std::string_view::npos) {
    line.kind = LineKind::Entry;
    line.name = TrimBlanks(rest.substr(0, eq));
    line.value = TrimBlanks(rest.substr(eq + 1));
  } else {
    line.kind = LineKind::Bare;
    line.name = TrimBlanks(rest);
  }
}

// A line without "=" holds no value: it is never found nor listed, but it
// still belongs to its section when keys are placed or a section deleted.
bool IsKeyLine(const Line& line) {
  return line.kind == LineKind::Entry || line.kind == LineKind::Bare;
}

// Index range [first, last) of the lines that belong to the first section
// named `section`; first is the header. nullopt when there is none.
struct SectionSpan {
  size_t header;
  size_t end;
};
std::optional<SectionSpan> FindSection(const std::vector<Line>& lines, std::string_view section) {
  for (size_t i = 0; i < lines.size(); ++i) {
    if (lines[i].kind != LineKind::Section || !SameName(lines[i].name, section))
      continue;
    size_t end = i + 1;
    while (end < lines.size() && lines[end].kind != LineKind::Section)
      ++end;
    return SectionSpan{i, end};
  }
  return std::nullopt;
}

std::optional<size_t> FindKey(const std::vector<Line>& lines, SectionSpan span,
                              std::string_view key) {
  for (size_t i = span.header + 1; i < span.end; ++i) {
    if (lines[i].kind == LineKind::Entry && SameName(lines[i].name, key))
      return i;
  }
  return std::nullopt;
}

// Gives a text whose last line lacks its break one, so that what follows
// starts a line of its own.
void CompleteLastLine(std::string& text) {
  if (!text.empty() && text.back() != '\n' && text.back() != '\r')
    text.append(kLineBreak);
}

// Inserts `newLines` (each already carrying its break) after the line
// `after`; a last line without a break gets one first so that the new text
// starts on a line of its own.
std::string InsertAfter(std::string_view text, const Line& after, std::string_view newLines) {
  std::string out;
  out.reserve(text.size() + newLines.size() + 2);
  out.append(text.substr(0, after.next));
  CompleteLastLine(out);
  out.append(newLines);
  out.append(text.substr(after.next));
  return out;
}

std::string Joined(std::string_view a, std::string_view b, std::string_view c, std::string_view d) {
  std::string s;
  s.reserve(a.size() + b.size() + c.size() + d.size());
  s.append(a).append(b).append(c).append(d);
  return s;
}

} // namespace

std::vector<Line> ParseLines(std::string_view text) {
  std::vector<Line> lines;
  size_t pos = 0;
  while (pos < text.size()) {
    Line line;
    line.begin = pos;
    // A line ends at CR LF, LF or a CR alone, whichever comes first.
    const size_t br = text.find_first_of("\r\n", pos);
    if (br == std::string_view::npos) {
      line.end = text.size();
      line.next = text.size();
    } else {
      line.end = br;
      const bool crlf = text[br] == '\r' && br + 1 < text.size() && text[br + 1] == '\n';
      line.next = br + (crlf ? 2 : 1);
    }
    Classify(text.substr(line.begin, line.end - line.begin), line);
    lines.push_back(line);
    pos = line.next;
  }
  return lines;
}

std::string_view TrimCallerName(std::string_view name) {
  while (!name.empty() && name.front() == ' ')
    name.remove_prefix(1);
  while (!name.empty() && name.back() == ' ')
    name.remove_suffix(1);
  return name;
}

bool SameName(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return Lower(x) == Lower(y); });
}

bool IsFindableSection(std::string_view name) {
  return !HasOuterBlank(name) && name.find(']') == std::string_view::npos;
}

bool IsFindableKey(std::string_view name) {
  return !HasOuterBlank(name) && name.find('=') == std::string_view::npos &&
         (name.empty() || (name.front() != ';' && name.front() != '['));
}

bool IsCommentKey(std::string_view name) {
  return !name.empty() && name.front() == ';';
}

std::optional<std::string_view> FindValue(std::string_view text, std::string_view section,
                                          std::string_view key) {
  const std::vector<Line> lines = ParseLines(text);
  const auto span = FindSection(lines, section);
  if (!span)
    return std::nullopt;
  const auto at = FindKey(lines, *span, key);
  if (!at)
    return std::nullopt;
  std::string_view value = lines[*at].value;
  if (value.size() >= 2 && value.front() == value.back() &&
      (value.front() == '"' || value.front() == '\''))
    value = value.substr(1, value.size() - 2);
  return value;
}

std::vector<std::string_view> SectionNames(std::string_view text) {
  std::vector<std::string_view> names;
  for (const Line& line : ParseLines(text)) {
    if (line.kind == LineKind::Section)
      names.push_back(line.name);
  }
  return names;
}

std::vector<std::string_view> KeyNames(std::string_view text, std::string_view section) {
  std::vector<std::string_view> names;
  const std::vector<Line> lines = ParseLines(text);
  if (const auto span = FindSection(lines, section)) {
    for (size_t i = span->header + 1; i < span->end; ++i) {
      if (lines[i].kind == LineKind::Entry)
        names.push_back(lines[i].name);
    }
  }
  return names;
}

std::string SetValue(std::string_view text, std::string_view section, std::string_view key,
                     std::string_view value) {
  const std::vector<Line> lines = ParseLines(text);
  const auto span = FindSection(lines, section);
  if (!span) {
    // A new section goes at the end of the file.
    std::string out(text);
    CompleteLastLine(out);
    out.append(Joined("[", section, "]", kLineBreak)).append(Joined(key, "=", value, kLineBreak));
    return out;
  }
  if (const auto at = FindKey(lines, *span, key)) {
    // The key keeps the spelling it has in the file; the line is written
    // anew, break included.
    const Line& line = lines[*at];
    return Joined(text.substr(0, line.begin), Joined(line.name, "=", value, kLineBreak),
                  text.substr(line.next), "");
  }
  // A new key follows the last key line of the section; in a section without
  // keys it follows the last non-blank line, so that the blank lines that
  // separate sections stay where they are.
  size_t after = span->header;
  for (size_t i = span->header + 1; i < span->end; ++i) {
    if (IsKeyLine(lines[i]))
      after = i;
  }
  if (after == span->header) {
    for (size_t i = span->header + 1; i < span->end; ++i) {
      if (lines[i].kind != LineKind::Blank)
        after = i;
    }
  }
  return InsertAfter(text, lines[after], Joined(key, "=", value, kLineBreak));
}

std::string DeleteKey(std::string_view text, std::string_view section, std::string_view key) {
  const std::vector<Line> lines = ParseLines(text);
  const auto span = FindSection(lines, section);
  const auto at = span ? FindKey(lines, *span, key) : std::nullopt;
  if (!at)
    return std::string(text);
  const Line& line = lines[*at];
  return Joined(text.substr(0, line.begin), text.substr(line.next), "", "");
}

std::string DeleteSection(std::string_view text, std::string_view section) {
  const std::vector<Line> lines = ParseLines(text);
  const auto span = FindSection(lines, section);
  if (!span)
    return std::string(text);
  std::string out(text.substr(0, lines[span->header].begin));
  for (size_t i = span->header + 1; i < span->end; ++i) {
    if (!IsKeyLine(lines[i]))
      out.append(text.substr(lines[i].begin, lines[i].next - lines[i].begin));
  }
  const size_t tail = span->end < lines.size() ? lines[span->end].begin : text.size();
  out.append(text.substr(tail));
  return out;
}

} // namespace profile::detail
