#include "kdl/frame_writer.h"

#include <charconv>
#include <cstring>

#include "kdl/frame.h"

namespace kdl {
namespace {

char* StoreU32(char* p, uint32_t v) {
  p[0] = static_cast<char>(v);
  p[1] = static_cast<char>(v >> 8);
  p[2] = static_cast<char>(v >> 16);
  p[3] = static_cast<char>(v >> 24);
  return p + 4;
}

// Room for `n` more bytes at the end of `out`; returns where they start.
char* Grow(std::string& out, size_t n) {
  const size_t at = out.size();
  out.resize(at + n);
  return out.data() + at;
}

void PutField(std::string& out, uint32_t tag, std::initializer_list<std::string_view> values) {
  size_t n = 8;
  for (std::string_view v : values)
    n += 4 + v.size();
  char* p = StoreU32(StoreU32(Grow(out, n), tag), static_cast<uint32_t>(values.size()));
  for (std::string_view v : values) {
    p = StoreU32(p, static_cast<uint32_t>(v.size()));
    std::memcpy(p, v.data(), v.size());
    p += v.size();
  }
}

} // namespace

FrameWriter::FrameWriter(std::string& out) : out_(out), start_(out.size()) {
  // The frame length and the field count, patched by Finish.
  StoreU32(StoreU32(Room(8), 0), 0);
}

char* FrameWriter::Room(size_t n) {
  if (!spilled_ && used_ + n <= sizeof small_) {
    char* p = small_ + used_;
    used_ += n;
    return p;
  }
  if (!spilled_) {
    out_.append(small_, used_);
    spilled_ = true;
  }
  return Grow(out_, n);
}

void FrameWriter::Field(uint32_t tag, std::string_view value) {
  char* p = StoreU32(StoreU32(Room(12 + value.size()), tag), 1);
  p = StoreU32(p, static_cast<uint32_t>(value.size()));
  std::memcpy(p, value.data(), value.size());
  ++fields_;
}

void FrameWriter::Field(uint32_t tag, std::initializer_list<std::string_view> values) {
  size_t n = 8;
  for (std::string_view v : values)
    n += 4 + v.size();
  char* p = StoreU32(StoreU32(Room(n), tag), static_cast<uint32_t>(values.size()));
  for (std::string_view v : values) {
    p = StoreU32(p, static_cast<uint32_t>(v.size()));
    std::memcpy(p, v.data(), v.size());
    p += v.size();
  }
  ++fields_;
}

void FrameWriter::Number(uint32_t tag, int64_t value) {
  char buf[24];
  const auto end = std::to_chars(buf, buf + sizeof buf, value).ptr;
  Field(tag, std::string_view(buf, static_cast<size_t>(end - buf)));
}

void FrameWriter::Hundredths(uint32_t tag, int64_t value) {
  char buf[32];
  char* p = buf;
  // Magnitude as unsigned, so the most negative value has one too.
  uint64_t m = value < 0 ? 0 - static_cast<uint64_t>(value) : static_cast<uint64_t>(value);
  if (value < 0)
    *p++ = '-';
  p = std::to_chars(p, buf + sizeof buf, m / 100).ptr;
  *p++ = '.';
  *p++ = static_cast<char>('0' + m % 100 / 10);
  *p++ = static_cast<char>('0' + m % 10);
  Field(tag, std::string_view(buf, static_cast<size_t>(p - buf)));
}

void FrameWriter::Empty(uint32_t tag) {
  StoreU32(StoreU32(Room(8), tag), 0);
  ++fields_;
}

void FrameWriter::Raw(std::string_view fields, uint32_t fieldCount) {
  std::memcpy(Room(fields.size()), fields.data(), fields.size());
  fields_ += fieldCount;
}

void FrameWriter::Finish() {
  const size_t size = spilled_ ? out_.size() - start_ : used_;
  char* p = spilled_ ? out_.data() + start_ : small_;
  StoreU32(StoreU32(p, static_cast<uint32_t>(size - kFrameHeader)), fields_);
  if (!spilled_)
    out_.append(small_, used_);
}

void FieldBytes::Field(uint32_t tag, std::initializer_list<std::string_view> values) {
  PutField(bytes_, tag, values);
  ++count_;
}

} // namespace kdl
