#include "riskd/csv.h"

#include <charconv>
#include <limits>

namespace riskd {

std::optional<std::vector<std::string>> SplitCsvLine(std::string_view line) {
  if (!line.empty() && line.back() == '\r')
    line.remove_suffix(1);
  std::vector<std::string> fields;
  size_t i = 0;
  while (true) {
    std::string field;
    if (i < line.size() && line[i] == '"') {
      ++i;
      while (true) {
        if (i >= line.size())
          return std::nullopt;
        if (line[i] == '"') {
          if (i + 1 < line.size() && line[i + 1] == '"') {
            field += '"';
            i += 2;
            continue;
          }
          ++i;
          break;
        }
        field += line[i++];
      }
      if (i < line.size() && line[i] != ',')
        return std::nullopt;
    } else {
      const size_t end = line.find(',', i);
      const std::string_view raw = line.substr(i, end == std::string_view::npos ? end : end - i);
      if (raw.find('"') != std::string_view::npos)
        return std::nullopt;
      field.assign(raw);
      i += raw.size();
    }
    fields.push_back(std::move(field));
    if (i >= line.size())
      return fields;
    ++i; // the comma
  }
}

std::optional<int64_t> ParseWhole(std::string_view text) {
  int64_t value = 0;
  if (text.empty() || text.front() == '+')
    return std::nullopt;
  const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (ec != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return value;
}

std::optional<int64_t> ParseHundredths(std::string_view text) {
  const bool negative = !text.empty() && text.front() == '-';
  if (negative)
    text.remove_prefix(1);
  const size_t dot = text.find('.');
  const std::string_view whole = text.substr(0, dot);
  std::string_view frac = dot == std::string_view::npos ? std::string_view() : text.substr(dot + 1);
  if (whole.empty() || frac.size() > 2 || (dot != std::string_view::npos && frac.empty()))
    return std::nullopt;
  for (std::string_view part : {whole, frac})
    for (char c : part)
      if (c < '0' || c > '9')
        return std::nullopt;
  const auto units = ParseWhole(whole);
  if (!units || *units > std::numeric_limits<int64_t>::max() / 100 - 100)
    return std::nullopt;
  int64_t cents = 0;
  for (size_t k = 0; k < 2; ++k)
    cents = cents * 10 + (k < frac.size() ? frac[k] - '0' : 0);
  const int64_t value = *units * 100 + cents;
  return negative ? -value : value;
}

std::string FormatHundredths(int64_t value) {
  const bool negative = value < 0;
  const uint64_t magnitude =
      negative ? uint64_t{0} - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  std::string cents = std::to_string(magnitude % 100);
  if (cents.size() < 2)
    cents.insert(0, "0");
  return (negative ? "-" : "") + std::to_string(magnitude / 100) + "." + cents;
}

} // namespace riskd
