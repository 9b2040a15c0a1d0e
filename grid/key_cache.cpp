#include "grid/key_cache.h"

#include <algorithm>

namespace vh {

size_t ColumnKeys::Bytes() const {
  return keys.capacity() * sizeof(uint64_t) + ids.capacity() * sizeof(uint32_t) + texts.Bytes() +
         ranks.capacity() * sizeof(uint32_t) + dirty.capacity() * sizeof(uint32_t);
}

const std::vector<uint32_t>& ColumnKeys::Ranks() {
  if (ranks.size() != texts.Size())
    ranks = texts.Ranks();
  return ranks;
}

ColumnKeys* KeyCache::Find(int column) {
  return column >= 0 && size_t(column) < columns_.size() ? columns_[size_t(column)].get() : nullptr;
}

ColumnKeys& KeyCache::Install(int column, std::unique_ptr<ColumnKeys> keys) {
  if (size_t(column) >= columns_.size())
    columns_.resize(size_t(column) + 1);
  auto& slot = columns_[size_t(column)];
  built_ += slot ? 0 : 1;
  slot = std::move(keys);
  Touch(*slot);
  return *slot;
}

void KeyCache::Drop(int column) {
  if (column < 0 || size_t(column) >= columns_.size() || !columns_[size_t(column)])
    return;
  columns_[size_t(column)].reset();
  --built_;
}

void KeyCache::DropAll() {
  columns_.clear();
  built_ = 0;
}

void KeyCache::DropIfTooStale(size_t column) {
  const ColumnKeys& keys = *columns_[column];
  if (keys.dirty.size() > keys.Slots() / 4 + 64)
    Drop(int(column));
}

void KeyCache::SlotChanged(uint32_t slot) {
  for (size_t c = 0; c < columns_.size(); ++c) {
    if (!columns_[c])
      continue;
    columns_[c]->dirty.push_back(slot);
    DropIfTooStale(c);
  }
}

void KeyCache::SlotInserted(uint32_t slot) {
  for (size_t c = 0; c < columns_.size(); ++c) {
    ColumnKeys* keys = columns_[c].get();
    if (!keys)
      continue;
    if (keys->kind == ColumnKeys::Kind::kText)
      keys->ids.insert(keys->ids.begin() + std::min<ptrdiff_t>(slot, ptrdiff_t(keys->ids.size())),
                       0);
    else
      keys->keys.insert(
          keys->keys.begin() + std::min<ptrdiff_t>(slot, ptrdiff_t(keys->keys.size())), 0);
    for (uint32_t& d : keys->dirty)
      d += d >= slot ? 1 : 0;
    keys->dirty.push_back(slot);
    DropIfTooStale(c);
  }
}

void KeyCache::SlotErased(uint32_t slot) {
  for (size_t c = 0; c < columns_.size(); ++c) {
    ColumnKeys* keys = columns_[c].get();
    if (!keys)
      continue;
    if (slot >= keys->Slots()) {
      Drop(int(c)); // out of step with the store; never trust it again
      continue;
    }
    if (keys->kind == ColumnKeys::Kind::kText)
      keys->ids.erase(keys->ids.begin() + slot);
    else
      keys->keys.erase(keys->keys.begin() + slot);
    auto& dirty = keys->dirty;
    dirty.erase(std::remove(dirty.begin(), dirty.end(), slot), dirty.end());
    for (uint32_t& d : dirty)
      d -= d > slot ? 1 : 0;
  }
}

size_t KeyCache::Bytes() const {
  size_t total = 0;
  for (const auto& keys : columns_)
    total += keys ? keys->Bytes() : 0;
  return total;
}

void KeyCache::Trim(size_t limit) {
  size_t total = Bytes();
  while (total > limit && built_ > 0) {
    size_t oldest = columns_.size();
    for (size_t c = 0; c < columns_.size(); ++c)
      if (columns_[c] &&
          (oldest == columns_.size() || columns_[c]->lastUse < columns_[oldest]->lastUse))
        oldest = c;
    total -= columns_[oldest]->Bytes();
    Drop(int(oldest));
  }
}

} // namespace vh
