#include "holdings/alert_pass.h"

#include <algorithm>
#include <cstdlib>

#include "common/c_locale.h"

namespace vh {

void AlertHits::Clear() {
  hits_.clear();
  text_.clear();
}

AlertHits::Span AlertHits::Keep(std::string_view text) {
  const Span s{uint32_t(text_.size()), uint32_t(text.size())};
  text_.append(text);
  return s;
}

CustomAlert AlertHits::Hit(size_t row) const {
  CustomAlert a;
  if (row >= hits_.size())
    return a;
  a.field1 = Field(row, 1);
  a.field2 = Field(row, 2);
  a.field3 = Field(row, 3);
  a.field4 = Field(row, 4);
  a.field5 = Field(row, 5);
  return a;
}

std::string_view AlertHits::Field(size_t row, int field) const {
  if (row >= hits_.size() || field < 1 || field > 5)
    return {};
  return View(hits_[row].field[field - 1]);
}

size_t AlertHits::Add(std::string_view column, std::string_view isin, std::string_view value,
                      std::string_view clientId, std::string_view stamp, size_t pageTop,
                      size_t pageCount, bool& replaced) {
  // Only the page is searched: a duplicate further down stays a new row.
  const size_t end = std::min(hits_.size(), pageTop + pageCount);
  size_t row = hits_.size();
  for (size_t i = pageTop; i < end; ++i) {
    const Row& h = hits_[i];
    if (View(h.field[3]) == clientId && View(h.field[0]) == column && View(h.field[1]) == isin) {
      row = i;
      break;
    }
  }
  replaced = row < hits_.size();
  // An overwritten row's old texts stay in the buffer until Clear; a pass
  // replaces at most a page's worth of distinct rows per duplicate.
  const Row fresh{{Keep(column), Keep(isin), Keep(value), Keep(clientId), Keep(stamp)}};
  if (replaced)
    hits_[row] = fresh;
  else
    hits_.push_back(fresh);
  return row;
}

std::string FormatAlertTime(std::time_t when) {
  std::tm local{};
  if (!localtime_r(&when, &local))
    return {};
  char text[64];
  const size_t n = std::strftime(text, sizeof text, kAlertTimeFormat, &local);
  return std::string(text, n);
}

bool AlertMatches(const CustomAlert& rule, double value) {
  const double threshold = StrtodC(rule.field3.c_str(), nullptr);
  if (rule.field1 == kLessOrEqual)
    return value <= threshold;
  if (rule.field1 == kGreaterOrEqual)
    return value >= threshold;
  return false;
}

namespace {

struct ActiveRule {
  std::string name;
  int column = 0; // the rule's stored number
  bool lessOrEqual = false;
  double threshold = 0;
};

// The rules that apply, in the grid's column order; rules whose comparison
// is neither text can never match and are left out.
std::vector<ActiveRule> ActiveRules(const CAlertRuleTable& rules, AlertRowSource& rows) {
  std::vector<ActiveRule> active;
  for (const AlertColumn& c : rows.CustomColumns()) {
    const CustomAlert* rule = rules.Find(c.name);
    if (!rule || (rule->field1 != kLessOrEqual && rule->field1 != kGreaterOrEqual))
      continue;
    active.push_back({c.name, std::atoi(rule->field5.c_str()), rule->field1 == kLessOrEqual,
                      StrtodC(rule->field3.c_str(), nullptr)});
  }
  return active;
}

} // namespace

AlertPassCounts RunAlertPass(const CAlertRuleTable& rules, AlertRowSource& rows, AlertHits& hits,
                             AlertListSink& list, std::time_t (*now)(std::time_t*)) {
  AlertPassCounts counts;
  hits.Clear();
  list.Empty();
  const std::vector<ActiveRule> active = ActiveRules(rules, rows);
  if (active.empty()) {
    list.Redraw();
    return counts;
  }
  // Per rule, every row's value from the source at once, or none.
  std::vector<std::vector<double>> values(active.size());
  std::vector<char> whole(active.size(), 0);
  const int rowCount = rows.RowCount();
  for (size_t i = 0; i < active.size(); ++i) {
    rows.PrepareColumn(active[i].column);
    whole[i] = rows.Values(active[i].column, values[i]) && values[i].size() == size_t(rowCount);
  }
  const size_t page = size_t(std::max(0, list.CountPerPage()));
  std::time_t stampTime = -1;
  std::string stamp;
  for (int row = 0; row < rowCount; ++row) {
    const uint64_t item = rows.ItemData(row);
    if (item == 0)
      continue;
    ++counts.rowsChecked;
    // Every hit of a row carries the row's time; the text changes once a
    // second, so it is made only then.
    const std::time_t t = now(nullptr);
    if (t != stampTime) {
      stampTime = t;
      stamp = FormatAlertTime(t);
    }
    for (size_t i = 0; i < active.size(); ++i) {
      const ActiveRule& r = active[i];
      const double value = whole[i] ? values[i][size_t(row)] : rows.Value(item, r.column);
      if (r.lessOrEqual ? !(value <= r.threshold) : !(value >= r.threshold))
        continue;
      bool replaced = false;
      hits.Add(r.name, rows.Isin(item), rows.ValueText(item, r.column), rows.ClientId(item), stamp,
               0, page, replaced);
      ++counts.hits;
      counts.replaced += replaced;
    }
  }
  list.ShowRows(hits.Size());
  list.Redraw();
  return counts;
}

} // namespace vh
