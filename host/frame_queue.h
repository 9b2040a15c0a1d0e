// Frames received but not yet delivered, kept as their bytes in one buffer:
// a waiting message costs its payload and a length, and is parsed only when
// its turn comes (into one reused message).
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

namespace host {

class FrameQueue {
public:
  void Push(std::string_view payload);
  // The oldest payload, valid until the next Push or Pop; false when empty.
  bool Front(std::string_view* payload) const;
  // Drops the oldest payload (nothing when empty).
  void Pop();
  size_t size() const { return lengths_.size(); }
  bool empty() const { return lengths_.empty(); }
  void Clear();

private:
  std::string bytes_;
  size_t head_ = 0; // where the oldest payload starts in bytes_
  std::deque<uint32_t> lengths_;
};

} // namespace host
