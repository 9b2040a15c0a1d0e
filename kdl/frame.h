// Transport framing shared by the host and the back-end: a frame is a u32
// little-endian payload length followed by that many bytes, one serialised
// kdl message (docs/wire-format.md).
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kdl {

inline constexpr size_t kFrameHeader = 4;

// Appends the frame of `payload` to `out`. Returns false (and leaves `out`
// unchanged) when the payload is longer than a u32 length can say.
bool AppendFrame(std::string& out, std::string_view payload);

// The payload length in the kFrameHeader bytes at `header`.
uint32_t LoadLength(const char* header);

// Cuts a byte stream into frame payloads. Feed whatever arrived; take whole
// payloads out with Next. A length above the maximum puts the splitter into
// the failed state for good: the stream cannot be resynchronised, and the
// connection should be dropped.
class FrameSplitter {
public:
  explicit FrameSplitter(uint32_t maxFrame) : maxFrame_(maxFrame) {}

  // Appends received bytes. Returns false once the stream has failed (the
  // bytes are then discarded).
  bool Feed(const void* data, size_t size);

  // The next whole payload, valid until the next Feed or Next call. Returns
  // false when no whole frame is buffered, or after failure.
  bool Next(std::string_view* payload);

  bool failed() const { return failed_; }
  // The length word that caused the failure (0 when not failed).
  uint32_t oversizeLength() const { return oversize_; }
  // Bytes buffered but not yet returned as frames.
  size_t pending() const { return buffer_.size() - head_; }

private:
  uint32_t maxFrame_;
  std::string buffer_;
  size_t head_ = 0; // start of the first unreturned byte in buffer_
  bool failed_ = false;
  uint32_t oversize_ = 0;
};

} // namespace kdl
