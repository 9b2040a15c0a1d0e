// Building messages: handles, scratch buffers and adding values in place.
//
// A message under construction is kept in its encoded form at all times (see
// docs/wire-format.md), so serialising it is free and the plug-in's one
// scratch buffer is the only storage its requests ever need.

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <new>

#include "kdl/kdl.h"
#include "kdl/kdl_msg.h"

namespace kdl::detail {

int32_t Fail(KdlError* err, int32_t code, const char* format, ...) {
  if (err) {
    err->code = code;
    va_list args;
    va_start(args, format);
    std::vsnprintf(err->text, sizeof err->text, format, args);
    va_end(args);
  }
  return 0;
}

} // namespace kdl::detail

using namespace kdl::detail;

namespace {

// Scratch buffers carry their size in a header in front of the address handed
// out, so kdl_start_msg needs only the pointer. The magic word catches a
// pointer that did not come from kdl_open_scratch (or was already closed).
struct alignas(16) ScratchHeader {
  uint32_t magic;
  uint32_t size;
};
constexpr uint32_t kScratchMagic = 0x4B444C53; // "KDLS"
constexpr uint32_t kScratchMax = 1u << 30;

ScratchHeader* HeaderOf(void* scratch) {
  return reinterpret_cast<ScratchHeader*>(static_cast<unsigned char*>(scratch) -
                                          sizeof(ScratchHeader));
}

// Bytes `count` values of `value` take in the encoding; false when a value is
// unusable or the total leaves 32 bits.
bool EncodedSize(uint32_t count, const KdlValue* value, uint64_t* total, KdlError* err) {
  uint64_t sum = 0;
  for (uint32_t i = 0; i < count; ++i) {
    if (!value[i].data && value[i].length != 0)
      return Fail(err, KDL_E_ARG, "value %u has no data", i);
    sum += 4 + uint64_t(value[i].length);
    if (sum > UINT32_MAX)
      return Fail(err, KDL_E_TOOBIG, "values exceed the 32-bit message size");
  }
  *total = sum;
  return true;
}

// Opens a gap of `gap` bytes at `at`, the end of field `index`, and moves
// the fields after it (headers and values) along. Positions are shifted by
// index, not by comparing offsets: an empty last value ends exactly at `at`.
void OpenGap(KdlMsg* msg, size_t index, uint32_t at, uint32_t gap) {
  std::memmove(msg->bytes + at + gap, msg->bytes + at, msg->size - at);
  msg->size += gap;
  const Field& f = msg->fields[index];
  for (size_t i = index + 1; i < msg->fields.size(); ++i)
    msg->fields[i].header += gap;
  for (size_t i = f.first + f.count; i < msg->values.size(); ++i)
    msg->values[i].offset += gap;
}

// Writes the values at `at` and records them as entries first..first+count.
// The caller has reserved room in `values`, so the insert cannot throw.
void WriteValues(KdlMsg* msg, uint32_t at, uint32_t first, uint32_t count, const KdlValue* value) {
  msg->values.insert(msg->values.begin() + first, count, Span{0, 0});
  for (uint32_t i = 0; i < count; ++i) {
    StoreU32(msg->bytes + at, value[i].length);
    if (value[i].length)
      std::memcpy(msg->bytes + at + 4, value[i].data, value[i].length);
    msg->values[first + i] = {at + 4, value[i].length};
    at += 4 + value[i].length;
  }
}

} // namespace

extern "C" {

int32_t kdl_ctor_primecb(KdlMsg** msg, KdlError* err) {
  if (!msg)
    return Fail(err, KDL_E_ARG, "no handle address");
  *msg = new (std::nothrow) KdlMsg;
  if (!*msg)
    return Fail(err, KDL_E_NOMEM, "out of memory for a message handle");
  return 1;
}

int32_t kdl_dtor_primecb(KdlMsg** msg, KdlError* err) {
  if (!msg || !*msg)
    return Fail(err, KDL_E_ARG, "no message handle");
  delete *msg;
  *msg = nullptr;
  return 1;
}

int32_t kdl_open_scratch(void** scratch, uint32_t size, KdlError* err) {
  if (!scratch)
    return Fail(err, KDL_E_ARG, "no scratch address");
  if (size < 4)
    return Fail(err, KDL_E_ARG, "scratch of %u bytes cannot hold a message", size);
  if (size > kScratchMax)
    return Fail(err, KDL_E_TOOBIG, "scratch of %u bytes exceeds %u", size, kScratchMax);
  void* block = std::malloc(sizeof(ScratchHeader) + size);
  if (!block)
    return Fail(err, KDL_E_NOMEM, "out of memory for %u bytes of scratch", size);
  auto* header = static_cast<ScratchHeader*>(block);
  header->magic = kScratchMagic;
  header->size = size;
  *scratch = header + 1;
  return 1;
}

int32_t kdl_close_scratch(void** scratch, KdlError* err) {
  if (!scratch || !*scratch)
    return Fail(err, KDL_E_ARG, "no scratch buffer");
  ScratchHeader* header = HeaderOf(*scratch);
  if (header->magic != kScratchMagic)
    return Fail(err, KDL_E_ARG, "not a scratch buffer of this library");
  header->magic = 0;
  std::free(header);
  *scratch = nullptr;
  return 1;
}

int32_t kdl_start_msg(KdlMsg* msg, void* scratch, KdlError* err) {
  if (!msg || !scratch)
    return Fail(err, KDL_E_ARG, "no message handle or scratch buffer");
  const ScratchHeader* header = HeaderOf(scratch);
  if (header->magic != kScratchMagic)
    return Fail(err, KDL_E_ARG, "not a scratch buffer of this library");
  std::vector<unsigned char>().swap(msg->owned);
  msg->fields.clear();
  msg->values.clear();
  msg->bytes = static_cast<unsigned char*>(scratch);
  msg->capacity = header->size;
  msg->size = 4;
  StoreU32(msg->bytes, 0);
  return 1;
}

int32_t kdl_add_data(KdlMsg* msg, uint32_t tag, uint32_t count, const KdlValue* value,
                     KdlError* err) {
  if (!msg || (count && !value))
    return Fail(err, KDL_E_ARG, "no message handle or values");
  if (!msg->bytes || !msg->owned.empty())
    return Fail(err, KDL_E_STATE, "message not started in a scratch buffer");
  uint64_t added = 0;
  if (!EncodedSize(count, value, &added, err))
    return 0;
  const Field* found = FindField(msg, tag);
  if (!found)
    added += 8;
  if (found && uint64_t(found->count) + count > UINT32_MAX)
    return Fail(err, KDL_E_TOOBIG, "field %u would hold more than 2^32-1 values", tag);
  if (msg->size + added > msg->capacity)
    return Fail(err, KDL_E_FULL, "%llu more bytes do not fit %u of scratch (%u in use)",
                static_cast<unsigned long long>(added), msg->capacity, msg->size);

  const size_t index = found ? static_cast<size_t>(found - msg->fields.data()) : 0;
  // Reserve the index first (which may move `found`): once bytes move, nothing may fail any more.
  try {
    msg->values.reserve(msg->values.size() + count);
    msg->fields.reserve(msg->fields.size() + 1);
  } catch (const std::bad_alloc&) {
    return Fail(err, KDL_E_NOMEM, "out of memory for the index of %u values", count);
  }
  if (found) {
    Field& f = msg->fields[index];
    const uint32_t end = f.count ? msg->values[f.first + f.count - 1].offset +
                                       msg->values[f.first + f.count - 1].length
                                 : f.header + 8;
    OpenGap(msg, index, end, static_cast<uint32_t>(added));
    for (size_t i = index + 1; i < msg->fields.size(); ++i)
      msg->fields[i].first += count;
    WriteValues(msg, end, f.first + f.count, count, value);
    f.count += count;
    StoreU32(msg->bytes + f.header + 4, f.count);
    return 1;
  }
  Field f{tag, msg->size, static_cast<uint32_t>(msg->values.size()), count};
  StoreU32(msg->bytes + f.header, tag);
  StoreU32(msg->bytes + f.header + 4, count);
  msg->size += 8;
  WriteValues(msg, msg->size, f.first, count, value);
  msg->size += static_cast<uint32_t>(added) - 8;
  msg->fields.push_back(f);
  StoreU32(msg->bytes, static_cast<uint32_t>(msg->fields.size()));
  return 1;
}

} // extern "C"
