#include "settings/value_fields.h"

#include <climits>
#include <cstdio>
#include <cstdlib>

namespace vh {

std::optional<std::string_view> FieldReader::Next(char delimiter) {
  if (pos_ > text_.size())
    return std::nullopt;
  const size_t cut = text_.find(delimiter, pos_);
  const size_t end = cut == std::string_view::npos ? text_.size() : cut;
  const std::string_view field = text_.substr(pos_, end - pos_);
  pos_ = cut == std::string_view::npos ? text_.size() + 1 : cut + 1;
  return field;
}

int ToInt(std::string_view text) {
  // strtol needs a terminated string; values are short.
  const std::string s(text);
  const long v = std::strtol(s.c_str(), nullptr, 10);
  if (v > INT_MAX)
    return INT_MAX;
  if (v < INT_MIN)
    return INT_MIN;
  return static_cast<int>(v);
}

uint32_t ToHexColour(std::string_view text) {
  const std::string s(text);
  return static_cast<uint32_t>(std::strtoull(s.c_str(), nullptr, 16));
}

std::string HexColour(uint32_t colour) {
  char buf[16];
  std::snprintf(buf, sizeof buf, "%X", static_cast<unsigned>(colour));
  return buf;
}

} // namespace vh
