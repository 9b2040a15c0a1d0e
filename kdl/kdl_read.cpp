// Reading messages, and the way in and out of the wire encoding.
//
// kdl_parse is the one place where bytes from outside enter the library, so it
// trusts nothing: every count and length is checked against what is left of
// the buffer before it is used, in 64-bit arithmetic, and the whole buffer
// must be consumed. See docs/wire-format.md for the layout.

#include <algorithm>
#include <cstring>
#include <new>
#include <utility>
#include <vector>

#include "kdl/kdl.h"
#include "kdl/kdl_msg.h"

using namespace kdl::detail;

namespace {

// What a reused handle keeps between parses: a holdings record is well
// under a kilobyte.
constexpr size_t kKeptBytes = 64 * 1024;
constexpr size_t kKeptValues = 4096;

// Messages with at most this many fields have their tags checked for
// repeats in a table on the stack: a few stores per field, no sort.
constexpr uint32_t kSmallFields = 64;

// Adds `key` (nonzero) to the open table; false when it was there already.
bool Insert(uint32_t* table, uint32_t slots, uint32_t key) {
  uint32_t slot = (key * 0x9E3779B1u) >> 24 & (slots - 1);
  for (; table[slot] != 0; slot = (slot + 1) & (slots - 1))
    if (table[slot] == key)
      return false;
  table[slot] = key;
  return true;
}

int32_t UniqueSmall(const KdlMsg* msg, KdlError* err) {
  constexpr uint32_t kSlots = 256; // power of two, at least 2 * kSmallFields
  uint32_t tag1[kSlots];           // tag + 1, 0 for a free slot
  std::memset(tag1, 0, sizeof tag1);
  bool sawLargest = false; // tag 2^32-1, which has no tag + 1
  for (const Field& f : msg->fields) {
    if (f.tag == UINT32_MAX ? std::exchange(sawLargest, true) : !Insert(tag1, kSlots, f.tag + 1))
      return Fail(err, KDL_E_FORMAT, "tag %u appears in more than one field", f.tag);
  }
  return 1;
}

int32_t UniqueSorted(const KdlMsg* msg, KdlError* err) {
  std::vector<uint32_t> tags(msg->fields.size());
  for (size_t i = 0; i < tags.size(); ++i)
    tags[i] = msg->fields[i].tag;
  std::sort(tags.begin(), tags.end());
  const auto dup = std::adjacent_find(tags.begin(), tags.end());
  if (dup != tags.end())
    return Fail(err, KDL_E_FORMAT, "tag %u appears in more than one field", *dup);
  return 1;
}

// Walks the encoding in `msg->bytes` and builds the field and value index.
int32_t Index(KdlMsg* msg, KdlError* err) {
  const unsigned char* p = msg->bytes;
  const uint64_t size = msg->size;
  if (size < 4)
    return Fail(err, KDL_E_FORMAT, "%llu bytes cannot hold the field count",
                static_cast<unsigned long long>(size));
  const uint32_t fieldCount = LoadU32(p);
  // Each field takes at least its 8-byte header: a larger count is a lie, and
  // checking it first keeps the reservation below bounded by the input.
  if (fieldCount > (size - 4) / 8)
    return Fail(err, KDL_E_FORMAT, "field count %u exceeds what %llu bytes can hold", fieldCount,
                static_cast<unsigned long long>(size));
  msg->fields.reserve(fieldCount);
  // Every value takes at least its 4-byte length: reserving that bound once
  // (again limited by the input) saves the vector's regrowths per message.
  msg->values.reserve((size - 4 - uint64_t(fieldCount) * 8) / 4);
  uint64_t at = 4;
  for (uint32_t i = 0; i < fieldCount; ++i) {
    if (size - at < 8)
      return Fail(err, KDL_E_FORMAT, "field %u header truncated at offset %llu", i,
                  static_cast<unsigned long long>(at));
    Field f{LoadU32(p + at), static_cast<uint32_t>(at), static_cast<uint32_t>(msg->values.size()),
            LoadU32(p + at + 4)};
    at += 8;
    if (f.count > (size - at) / 4)
      return Fail(err, KDL_E_FORMAT, "field %u: %u values cannot fit from offset %llu", f.tag,
                  f.count, static_cast<unsigned long long>(at));
    for (uint32_t v = 0; v < f.count; ++v) {
      if (size - at < 4)
        return Fail(err, KDL_E_FORMAT, "field %u value %u: length truncated at offset %llu", f.tag,
                    v, static_cast<unsigned long long>(at));
      const uint32_t length = LoadU32(p + at);
      at += 4;
      if (length > size - at)
        return Fail(err, KDL_E_FORMAT,
                    "field %u value %u: length %u runs past the end at offset %llu", f.tag, v,
                    length, static_cast<unsigned long long>(at));
      msg->values.push_back({static_cast<uint32_t>(at), length});
      at += length;
    }
    msg->fields.push_back(f);
  }
  if (at != size)
    return Fail(err, KDL_E_FORMAT, "%llu bytes of trailing garbage at offset %llu",
                static_cast<unsigned long long>(size - at), static_cast<unsigned long long>(at));
  // A builder merges repeated tags into one field; a message that repeats one
  // would read differently depending on which copy a reader finds first.
  // Answers carry a few dozen fields: those are checked in a small table on
  // the stack, larger messages by sorting their tags.
  return fieldCount <= kSmallFields ? UniqueSmall(msg, err) : UniqueSorted(msg, err);
}

} // namespace

extern "C" {

int32_t kdl_get_field(const KdlMsg* msg, uint32_t tag, uint32_t* count, KdlError* err) {
  if (!msg || !count)
    return Fail(err, KDL_E_ARG, "no message or count");
  if (!msg->bytes)
    return Fail(err, KDL_E_STATE, "message neither started nor parsed");
  const Field* f = FindField(msg, tag);
  if (!f)
    return Fail(err, KDL_E_NOTFOUND, "no field %u", tag);
  *count = f->count;
  return 1;
}

int32_t kdl_get_data(const KdlMsg* msg, uint32_t tag, uint32_t index, KdlValue* value,
                     KdlError* err) {
  if (!msg || !value)
    return Fail(err, KDL_E_ARG, "no message or value");
  if (!msg->bytes)
    return Fail(err, KDL_E_STATE, "message neither started nor parsed");
  const Field* f = FindField(msg, tag);
  if (!f)
    return Fail(err, KDL_E_NOTFOUND, "no field %u", tag);
  if (index >= f->count)
    return Fail(err, KDL_E_NOTFOUND, "field %u has %u values, no value %u", tag, f->count, index);
  const Span& s = msg->values[f->first + index];
  value->data = reinterpret_cast<const char*>(msg->bytes + s.offset);
  value->length = s.length;
  return 1;
}

int32_t kdl_serialise(const KdlMsg* msg, const void** bytes, uint32_t* length, KdlError* err) {
  if (!msg || !bytes || !length)
    return Fail(err, KDL_E_ARG, "no message or output");
  if (!msg->bytes)
    return Fail(err, KDL_E_STATE, "message neither started nor parsed");
  *bytes = msg->bytes;
  *length = msg->size;
  return 1;
}

int32_t kdl_parse_into(KdlMsg* msg, const void* bytes, uint32_t length, KdlError* err) {
  if (!msg || (!bytes && length))
    return Fail(err, KDL_E_ARG, "no bytes or no handle");
  // Memory kept from earlier parses is reused; an outsized message's is
  // let go, so one large answer does not pin its buffers to the handle.
  if (msg->owned.capacity() > kKeptBytes)
    std::vector<unsigned char>().swap(msg->owned);
  if (msg->values.capacity() > kKeptValues)
    std::vector<Span>().swap(msg->values);
  msg->bytes = nullptr;
  msg->size = msg->capacity = 0;
  msg->fields.clear();
  msg->values.clear();
  msg->findHint = 0;
  int32_t ok = 0;
  try {
    const auto* begin = static_cast<const unsigned char*>(bytes);
    msg->owned.assign(begin, begin + length);
    msg->bytes = msg->owned.data();
    msg->size = msg->capacity = length;
    ok = Index(msg, err);
  } catch (const std::bad_alloc&) {
    ok = Fail(err, KDL_E_NOMEM, "out of memory for a message of %u bytes", length);
  }
  if (!ok) {
    msg->bytes = nullptr;
    msg->size = msg->capacity = 0;
    msg->fields.clear();
    msg->values.clear();
  }
  return ok;
}

int32_t kdl_parse(const void* bytes, uint32_t length, KdlMsg** msg, KdlError* err) {
  if (!msg || (!bytes && length))
    return Fail(err, KDL_E_ARG, "no bytes or no handle address");
  KdlMsg* parsed = new (std::nothrow) KdlMsg;
  if (!parsed)
    return Fail(err, KDL_E_NOMEM, "out of memory for a message handle");
  if (!kdl_parse_into(parsed, bytes, length, err)) {
    delete parsed;
    return 0;
  }
  *msg = parsed;
  return 1;
}

} // extern "C"
