#include "kdl/frame.h"

#include <limits>

namespace kdl {

uint32_t LoadLength(const char* p) {
  const auto* u = reinterpret_cast<const unsigned char*>(p);
  return uint32_t(u[0]) | uint32_t(u[1]) << 8 | uint32_t(u[2]) << 16 | uint32_t(u[3]) << 24;
}

bool AppendFrame(std::string& out, std::string_view payload) {
  if (payload.size() > std::numeric_limits<uint32_t>::max())
    return false;
  const auto n = static_cast<uint32_t>(payload.size());
  const char header[kFrameHeader] = {static_cast<char>(n), static_cast<char>(n >> 8),
                                     static_cast<char>(n >> 16), static_cast<char>(n >> 24)};
  out.append(header, kFrameHeader);
  out.append(payload);
  return true;
}

bool FrameSplitter::Feed(const void* data, size_t size) {
  if (failed_)
    return false;
  // Drop what Next has handed out before the buffer grows again; done here,
  // not in Next, so the last returned payload stays valid until this call.
  if (head_ > 0) {
    buffer_.erase(0, head_);
    head_ = 0;
  }
  buffer_.append(static_cast<const char*>(data), size);
  return true;
}

bool FrameSplitter::Next(std::string_view* payload) {
  if (failed_ || buffer_.size() - head_ < kFrameHeader)
    return false;
  const uint32_t length = LoadLength(buffer_.data() + head_);
  if (length > maxFrame_) {
    failed_ = true;
    oversize_ = length;
    buffer_.clear();
    head_ = 0;
    return false;
  }
  if (buffer_.size() - head_ - kFrameHeader < length)
    return false;
  *payload = std::string_view(buffer_).substr(head_ + kFrameHeader, length);
  head_ += kFrameHeader + length;
  return true;
}

} // namespace kdl
