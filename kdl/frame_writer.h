// Writes one framed message straight into an output buffer, field by field,
// for senders of many records: no message object, no copy. The bytes are
// those kdl_serialise gives for the same fields (docs/wire-format.md), as
// long as each tag is written once, with all its values.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kdl {

class FrameWriter {
public:
  // Starts a frame at the end of `out`; `out` must outlive the writer.
  explicit FrameWriter(std::string& out);

  void Field(uint32_t tag, std::string_view value);
  void Field(uint32_t tag, std::initializer_list<std::string_view> values);
  // The decimal text of `value`.
  void Number(uint32_t tag, int64_t value);
  // `value` hundredths as a decimal with two places ("-0.05", "12.50").
  void Hundredths(uint32_t tag, int64_t value);
  void Empty(uint32_t tag);
  // Bytes of whole fields made by another writer (see FieldBytes), and how
  // many fields they hold.
  void Raw(std::string_view fields, uint32_t fieldCount);

  // Completes the frame (its length and field count) in the output; nothing
  // reaches the output before it unless the record outgrows 1 KiB.
  void Finish();

private:
  // A record is put together here and appended once: a field at a time
  // into the output cost a fifth of a million-row answer. Larger records
  // spill into the output and go on there.
  char* Room(size_t n);

  std::string& out_;
  size_t start_;
  uint32_t fields_ = 0;
  char small_[1024];
  size_t used_ = 0;
  bool spilled_ = false;
};

// Field bytes without a message around them, for a block of fields that
// many records share (pass to FrameWriter::Raw).
class FieldBytes {
public:
  void Field(uint32_t tag, std::initializer_list<std::string_view> values);
  const std::string& bytes() const { return bytes_; }
  uint32_t count() const { return count_; }

private:
  std::string bytes_;
  uint32_t count_ = 0;
};

} // namespace kdl
