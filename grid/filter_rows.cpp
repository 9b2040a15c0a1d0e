// The engine's filter state: two parallel arrays (filtered column, filter
// text) edited through the header's filter fields, and the pass that
// rebuilds the display map from them.
#include "grid/row_engine.h"

#include "common/message.h"
#include "grid/filter_match.h"
#include "grid/key_cache.h"

#include <algorithm>

namespace vh {

void RowEngine::EditFilter(int dataColumn, std::string_view text) {
  const auto found = std::find(filterColumns_.begin(), filterColumns_.end(), dataColumn);
  const size_t i = size_t(found - filterColumns_.begin());
  if (found == filterColumns_.end()) {
    if (!text.empty()) {
      filterColumns_.push_back(dataColumn);
      filterTexts_.emplace_back(text);
    }
    return;
  }
  if (i >= filterTexts_.size())
    return; // arrays already out of step; the pass reports it
  if (text.empty()) {
    filterColumns_.erase(found);
    filterTexts_.erase(filterTexts_.begin() + ptrdiff_t(i));
  } else {
    filterTexts_[i] = std::string(text);
  }
}

void RowEngine::OnHeaderFilterChanged(int headerItem, std::string_view text) {
  const int column = DataColumnAt(headerItem);
  if (column >= 0)
    EditFilter(column, text);
  Filter();
}

// Writing a header filter field makes the header report a change; the
// engine plays both halves so that it behaves the same with no header.
void RowEngine::WriteHeaderFilter(int headerItem, std::string_view text) {
  if (observer_ && headerItem < HeaderItemCount())
    observer_->OnHeaderFilterText(headerItem, text);
  OnHeaderFilterChanged(headerItem, text);
}

void RowEngine::SetFilter(int dataColumn, std::string_view text, bool exact) {
  if (dataColumn < 0 || dataColumn >= ColumnCount())
    return;
  exactFlags_ = uint16_t((exactFlags_ & 0xFF00) | (exact ? 1 : 0));
  const int position = ColumnPosition(dataColumn);
  if (position >= 0) {
    WriteHeaderFilter(position, text);
    return;
  }
  // Kept: a hidden column's filter also clears the filter of the column
  // shown first, because the refresh goes through header item 0.
  EditFilter(dataColumn, text);
  WriteHeaderFilter(0, "");
}

void RowEngine::ResetFilters() {
  filterColumns_.clear();
  filterTexts_.clear();
  if (observer_)
    observer_->OnClearHeaderFilters();
  Filter();
}

// Rewriting the first filter's text is what makes the header filter again.
// A hidden first column has no field to rewrite; the pass runs directly so
// the new mode still takes effect.
void RowEngine::ToggleExactMatch() {
  exactFlags_ ^= 0x0100;
  if (filterColumns_.empty() || filterTexts_.empty()) {
    WriteHeaderFilter(0, "");
    return;
  }
  const int position = ColumnPosition(filterColumns_.front());
  if (position >= 0)
    WriteHeaderFilter(position, std::string(filterTexts_.front()));
  else
    Filter();
}

void RowEngine::RestoreFilters(std::vector<int32_t> columns, std::vector<std::string> texts) {
  filterColumns_ = std::move(columns);
  filterTexts_ = std::move(texts);
}

void RowEngine::Filter() {
  if (!HasDataSource() || HeaderItemCount() == 0)
    return;
  map_.clear();
  displayedCount_ = 0;
  if (filterColumns_.size() != filterTexts_.size()) {
    ShowMessage("Error occured while filtering");
    // The widget still learns that no row is shown, so it never asks for
    // rows the engine no longer has.
    if (observer_)
      observer_->OnFiltered(0);
    return;
  }
  // Each text is compiled once per pass, not once per row; a filter that
  // lets everything through needs no cell text at all.
  std::vector<std::pair<int, FilterPattern>> active;
  for (size_t i = 0; i < filterColumns_.size(); ++i) {
    FilterPattern pattern(filterTexts_[i]);
    if (!pattern.MatchesEverything())
      active.emplace_back(filterColumns_[i], std::move(pattern));
  }
  const bool exact = exactFlags_ != 0;
  std::vector<FilterKeys> cached;
  // The only filter may choose its rows while its column's cache is built.
  std::vector<int32_t>* sweepMap = active.size() == 1 ? &map_ : nullptr;
  for (const auto& filter : active)
    cached.push_back(PrepareFilterKeys(filter.first, filter.second, exact, sweepMap));
  std::string scratch;
  // One filter read from its cache runs in a loop of its own.
  const bool oneCached = active.size() == 1 && cached[0].mode != FilterKeys::Mode::kTexts;
  const bool swept = oneCached && cached[0].swept;
  if (!swept)
    map_.clear(); // what a sweep that did not cover every row left
  if (oneCached && !swept)
    FilterOneCached(cached[0], active[0].second, exact, items_, map_);
  for (size_t d = 0; !oneCached && d < items_.size(); ++d) {
    const uint64_t item = items_[d];
    if (item == 0)
      continue;
    bool passes = true;
    for (size_t i = 0; i < active.size() && passes; ++i) {
      const auto& filter = active[i];
      passes = cached[i].mode == FilterKeys::Mode::kTexts
                   ? filter.second.Matches(PassText(item, filter.first, scratch), exact)
                   : MatchCachedCell(cached[i], filter.second, exact, uint32_t(d));
    }
    if (passes)
      map_.push_back(int32_t(d));
  }
  EndPass();
  displayedCount_ = int(map_.size());
  exactFlags_ &= 0xFF00;
  if (observer_)
    observer_->OnFiltered(displayedCount_);
}

} // namespace vh
