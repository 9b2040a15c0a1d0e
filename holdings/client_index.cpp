#include "holdings/client_index.h"

namespace vh {
namespace {

unsigned char Fold(unsigned char c) {
  return c >= 'A' && c <= 'Z' ? c + ('a' - 'A') : c;
}

} // namespace

size_t ClientIdIndex::Hash::operator()(std::string_view s) const {
  uint64_t h = 0xcbf29ce484222325ull;
  for (unsigned char c : s)
    h = (h ^ Fold(c)) * 0x100000001b3ull;
  return size_t(h ^ (h >> 29));
}

bool ClientIdIndex::Equal::operator()(std::string_view a, std::string_view b) const {
  if (a.size() != b.size())
    return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (Fold(a[i]) != Fold(b[i]))
      return false;
  return true;
}

void ClientIdIndex::Clear() {
  ids_.clear();
  entries_ = 0;
}

void ClientIdIndex::Add(std::string_view id) {
  ++entries_;
  if (!Contains(id))
    ids_.emplace(id);
}

bool ClientIdIndex::Contains(std::string_view id) const {
  return ids_.find(id) != ids_.end();
}

} // namespace vh
