// Inside of the opaque KdlMsg handle, shared by the builder and the reader.
// Not part of the library's contract: only kdl/*.cpp include it.
#pragma once

#include <cstdint>
#include <cstring>
#include <vector>

#include "kdl/kdl.h"

namespace kdl::detail {

// One field of the encoded message: where its header sits and which entries
// of KdlMsg::values are its values. The values of a field are contiguous in
// `values` and in the bytes, in the order they were added.
struct Field {
  uint32_t tag;
  uint32_t header; // byte offset of the field's tag in the encoding
  uint32_t first;  // index of its first value in KdlMsg::values
  uint32_t count;
};

// A value as offset and length into the encoding (offsets, not pointers, so
// that moving bytes only needs offsets adjusted, never pointers fixed up).
struct Span {
  uint32_t offset;
  uint32_t length;
};

inline uint32_t LoadU32(const unsigned char* p) {
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

inline void StoreU32(unsigned char* p, uint32_t v) {
  p[0] = static_cast<unsigned char>(v);
  p[1] = static_cast<unsigned char>(v >> 8);
  p[2] = static_cast<unsigned char>(v >> 16);
  p[3] = static_cast<unsigned char>(v >> 24);
}

// Fills `err` (when given) and returns 0, so that failures read
// `return Fail(err, KDL_E_ARG, "...")`.
int32_t Fail(KdlError* err, int32_t code, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

} // namespace kdl::detail

// The encoding lives either in a caller's scratch buffer (a message being
// built) or in `owned` (a parsed message; never empty then, since even an
// empty message has its 4-byte field count); `bytes` points at whichever.
struct KdlMsg {
  unsigned char* bytes = nullptr; // nullptr until started or parsed
  uint32_t size = 0;              // bytes in use
  uint32_t capacity = 0;          // bytes available at `bytes`
  std::vector<unsigned char> owned;
  std::vector<kdl::detail::Field> fields;
  std::vector<kdl::detail::Span> values;
  mutable uint32_t findHint = 0; // where FindField last found a field
};

namespace kdl::detail {

// Finds the field `tag`, or nullptr. Readers mostly ask for fields in the
// order they were written, so the scan starts where the last one was found
// and wraps: in-order reads cost one comparison each instead of a walk from
// the first field. Inline: every read of a value starts here.
inline const Field* FindField(const KdlMsg* msg, uint32_t tag) {
  const size_t n = msg->fields.size();
  size_t i = msg->findHint < n ? msg->findHint : 0;
  for (size_t k = 0; k < n; ++k) {
    if (msg->fields[i].tag == tag) {
      msg->findHint = uint32_t(i);
      return &msg->fields[i];
    }
    if (++i == n)
      i = 0;
  }
  return nullptr;
}

} // namespace kdl::detail
