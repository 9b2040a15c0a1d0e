#include "host/frame_queue.h"

namespace host {
namespace {

// Delivered bytes are cut from the front once they are this many and at
// least half of the buffer, so a long answer moves each byte about once.
constexpr size_t kCompactBytes = 256 * 1024;

} // namespace

void FrameQueue::Push(std::string_view payload) {
  if (head_ >= kCompactBytes && head_ * 2 >= bytes_.size()) {
    bytes_.erase(0, head_);
    head_ = 0;
  }
  bytes_.append(payload);
  lengths_.push_back(uint32_t(payload.size()));
}

bool FrameQueue::Front(std::string_view* payload) const {
  if (lengths_.empty())
    return false;
  *payload = std::string_view(bytes_).substr(head_, lengths_.front());
  return true;
}

void FrameQueue::Pop() {
  if (lengths_.empty())
    return;
  head_ += lengths_.front();
  lengths_.pop_front();
  if (lengths_.empty())
    Clear();
}

void FrameQueue::Clear() {
  bytes_.clear();
  head_ = 0;
  lengths_.clear();
}

} // namespace host
