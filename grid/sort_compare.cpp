#include "grid/sort_compare.h"

#include "grid/row_convert.h"

#include <array>
#include <tuple>

namespace vh {
namespace {

int Sign(int v) {
  return (v > 0) - (v < 0);
}

// Byte-wise like strcmp: unsigned, a prefix first.
int CompareBytes(std::string_view a, std::string_view b) {
  return Sign(a.compare(b));
}

// A field at [from, from + length) that the text is too short for reads 0.
int Field(std::string_view text, size_t from, size_t length) {
  return text.size() >= from + length ? CAtoi(text.substr(from, length)) : 0;
}

// Times are read from the last eight characters: hours, minutes, seconds.
int CompareTimes(std::string_view a, std::string_view b) {
  const auto parts = [](std::string_view t) {
    if (t.size() > 8)
      t = t.substr(t.size() - 8);
    return std::tuple(Field(t, 0, 2), Field(t, 3, 2), Field(t, 6, 2));
  };
  const auto ta = parts(a);
  const auto tb = parts(b);
  return ta < tb ? -1 : (tb < ta ? 1 : 0);
}

struct Date {
  int year = 0, month = 0, day = 0;
  std::string_view rest;
  auto Key() const { return std::tuple(year, month, day); }
};

Date SeparatedDate(std::string_view text, char separator) {
  Date date;
  const size_t first = text.find(separator);
  date.day = CAtoi(text.substr(0, first));
  if (first == std::string_view::npos)
    return date;
  const size_t second = text.find(separator, first + 1);
  date.month = CAtoi(text.substr(first + 1, second - first - 1));
  if (second == std::string_view::npos)
    return date;
  const std::string_view year = text.substr(second + 1, 4);
  date.year = CAtoi(year);
  date.rest = text.substr(second + 1 + year.size());
  return date;
}

int MonthNumber(std::string_view name) {
  static constexpr std::array<std::string_view, 12> kMonths = {
      "Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  for (size_t i = 0; i < kMonths.size(); ++i)
    if (name == kMonths[i])
      return int(i) + 1;
  return 0;
}

// Up to `length` characters from `from`; empty past the end.
std::string_view Sub(std::string_view text, size_t from, size_t length) {
  return from < text.size() ? text.substr(from, length) : std::string_view();
}

Date FixedDate(std::string_view text) {
  Date date;
  date.day = CAtoi(Sub(text, 0, 2));
  date.month = MonthNumber(Sub(text, 2, 3));
  date.year = CAtoi(Sub(text, 5, 4));
  return date;
}

int CompareDates(const Date& a, const Date& b) {
  return a.Key() < b.Key() ? -1 : (b.Key() < a.Key() ? 1 : 0);
}

bool Contains(std::string_view text, std::string_view part) {
  return text.find(part) != std::string_view::npos;
}

} // namespace

int CompareDateTime(std::string_view a, std::string_view b, int direction) {
  if (a.size() != b.size())
    return direction * CompareBytes(b, a);
  const bool slash = Contains(a, "/");
  if (slash || Contains(a, "-")) {
    const char separator = slash ? '/' : '-';
    const Date da = SeparatedDate(a, separator);
    const Date db = SeparatedDate(b, separator);
    const int byDate = CompareDates(da, db);
    return direction * (byDate != 0 ? byDate : CompareTimes(da.rest, db.rest));
  }
  if (Contains(a, ":")) {
    if (Contains(a, "AM") && Contains(b, "PM"))
      return -direction;
    if (Contains(b, "AM") && Contains(a, "PM"))
      return direction;
    return direction * CompareTimes(a.substr(0, 8), b.substr(0, 8));
  }
  return direction * CompareDates(FixedDate(a), FixedDate(b));
}

} // namespace vh
