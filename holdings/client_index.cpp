#include "holdings/client_index.h"

namespace vh {

std::string_view ClientIdIndex::Folded(std::string_view id) const {
  folded_.assign(id);
  for (char& c : folded_)
    if (c >= 'A' && c <= 'Z')
      c += 'a' - 'A';
  return folded_;
}

void ClientIdIndex::Clear() {
  ids_.Clear();
  hasEmpty_ = false;
  entries_ = 0;
}

void ClientIdIndex::Add(std::string_view id) {
  ++entries_;
  hasEmpty_ = hasEmpty_ || id.empty();
  ids_.Intern(Folded(id));
}

bool ClientIdIndex::Contains(std::string_view id) const {
  return id.empty() ? hasEmpty_ : ids_.Find(Folded(id)) != TextPool::kNotFound;
}

} // namespace vh
