#include "link/field_readers.h"

#include "common/c_locale.h"

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>

#include "link/envelope.h"

namespace vh {

namespace {

// Buffer sizes of the numeric readers; the back-end never sends numbers
// anywhere near these lengths, so cutting longer values loses nothing real.
constexpr size_t kLongBuffer = 32;
constexpr size_t kIntBuffer = 128;
constexpr size_t kDoubleBuffer = 64;

int Fetch(const KdlMsg* msg, uint32_t tag, uint32_t index, KdlValue* value, int32_t* kind) {
  KdlError err{};
  if (kdl_get_data(msg, tag, index, value, &err))
    return 1;
  if (kind)
    *kind = err.code == KDL_E_NOTFOUND ? kReaderMissing : kReaderFailed;
  return 0;
}

// Copies the value, cut to leave room for the NUL, into a zeroed buffer.
template <size_t N> void CopyInto(const KdlValue& value, char (&buffer)[N]) {
  std::memset(buffer, 0, N);
  if (value.length)
    std::memcpy(buffer, value.data, std::min<size_t>(value.length, N - 1));
}

// The platform the conversions were written for has 32-bit long and int,
// whose conversions saturate; this keeps that result on 64-bit long too.
int32_t ToInt32(const char* text) {
  const long long v = std::strtoll(text, nullptr, 10);
  return static_cast<int32_t>(std::clamp<long long>(v, INT32_MIN, INT32_MAX));
}

// The process locale may use a decimal comma (a GUI toolkit may set it from
// the environment); the back-end's numbers always use a point.

// The numeric readers differ only in their buffer and conversion; a failed
// read leaves the destination as it was.
template <size_t N, typename T, typename Convert>
int ReadNumber(const KdlMsg* msg, uint32_t tag, uint32_t index, T* out, int32_t* kind,
               Convert convert) {
  KdlValue value{};
  if (!Fetch(msg, tag, index, &value, kind))
    return 0;
  char buffer[N];
  CopyInto(value, buffer);
  *out = convert(buffer);
  return 1;
}

} // namespace

int ReadTextField(const KdlMsg* msg, uint32_t tag, uint32_t index, std::string* out,
                  int32_t* kind) {
  KdlValue value{};
  if (!Fetch(msg, tag, index, &value, kind)) {
    out->clear();
    return 0;
  }
  out->assign(value.data, value.length);
  return 1;
}

int ReadLongField(const KdlMsg* msg, uint32_t tag, uint32_t index, int32_t* out, int32_t* kind) {
  return ReadNumber<kLongBuffer>(msg, tag, index, out, kind, ToInt32);
}

int ReadIntField(const KdlMsg* msg, uint32_t tag, uint32_t index, int32_t* out, int32_t* kind) {
  return ReadNumber<kIntBuffer>(msg, tag, index, out, kind, ToInt32);
}

int ReadDoubleField(const KdlMsg* msg, uint32_t tag, uint32_t index, double* out, int32_t* kind) {
  return ReadNumber<kDoubleBuffer>(msg, tag, index, out, kind,
                                   [](const char* text) { return StrtodC(text, nullptr); });
}

} // namespace vh
