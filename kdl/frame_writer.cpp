#include "kdl/frame_writer.h"

#include <charconv>
#include <cstdlib>

#include "kdl/frame.h"

namespace kdl {
namespace {

void PutU32(std::string& out, uint32_t v) {
  const char b[4] = {static_cast<char>(v), static_cast<char>(v >> 8), static_cast<char>(v >> 16),
                     static_cast<char>(v >> 24)};
  out.append(b, 4);
}

void SetU32(std::string& out, size_t at, uint32_t v) {
  out[at] = static_cast<char>(v);
  out[at + 1] = static_cast<char>(v >> 8);
  out[at + 2] = static_cast<char>(v >> 16);
  out[at + 3] = static_cast<char>(v >> 24);
}

void PutField(std::string& out, uint32_t tag, std::initializer_list<std::string_view> values) {
  PutU32(out, tag);
  PutU32(out, static_cast<uint32_t>(values.size()));
  for (std::string_view v : values) {
    PutU32(out, static_cast<uint32_t>(v.size()));
    out.append(v);
  }
}

} // namespace

FrameWriter::FrameWriter(std::string& out) : out_(out), start_(out.size()) {
  PutU32(out_, 0); // frame length, patched by Finish
  PutU32(out_, 0); // field count, likewise
}

void FrameWriter::Head(uint32_t tag, uint32_t count) {
  PutU32(out_, tag);
  PutU32(out_, count);
  ++fields_;
}

void FrameWriter::Value(std::string_view value) {
  PutU32(out_, static_cast<uint32_t>(value.size()));
  out_.append(value);
}

void FrameWriter::Field(uint32_t tag, std::string_view value) {
  Head(tag, 1);
  Value(value);
}

void FrameWriter::Field(uint32_t tag, std::initializer_list<std::string_view> values) {
  PutField(out_, tag, values);
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
  Head(tag, 0);
}

void FrameWriter::Raw(std::string_view fields, uint32_t fieldCount) {
  out_.append(fields);
  fields_ += fieldCount;
}

void FrameWriter::Finish() {
  SetU32(out_, start_, static_cast<uint32_t>(out_.size() - start_ - kFrameHeader));
  SetU32(out_, start_ + kFrameHeader, fields_);
}

void FieldBytes::Field(uint32_t tag, std::initializer_list<std::string_view> values) {
  PutField(bytes_, tag, values);
  ++count_;
}

} // namespace kdl
