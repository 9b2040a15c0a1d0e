// Builds back-end answers for the receiver and the readers.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "kdl/message.h"

namespace linktest {

// (tag, value); nullopt adds the field without a value.
using AnswerFields = std::vector<std::pair<uint32_t, std::optional<std::string>>>;

inline kdl::Message Answer(const AnswerFields& fields) {
  kdl::Message m(1 << 16);
  for (const auto& [tag, value] : fields) {
    if (!(value ? m.Add(tag, *value) : m.AddEmpty(tag)))
      ADD_FAILURE() << "answer field " << tag << ": " << m.lastError().text;
  }
  return m;
}

} // namespace linktest
