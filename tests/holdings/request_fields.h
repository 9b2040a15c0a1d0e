// A request's fields as (tag, text) pairs, for comparing with a table.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "link/link_request.h"

namespace vh::test {

using FieldList = std::vector<std::pair<uint32_t, std::string>>;

inline FieldList FieldsOf(const CLinkRequest& request) {
  FieldList out;
  for (const auto& f : request.fields())
    out.emplace_back(f.tag, f.text);
  return out;
}

} // namespace vh::test
