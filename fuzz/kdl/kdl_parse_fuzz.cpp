// Whatever the bytes, kdl_parse either refuses them or yields a message whose
// every value lies inside it and whose encoding is the input, byte for byte.
// A parsed message is then rebuilt through the builder, which must produce
// the same bytes again.

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "kdl/frame.h"
#include "kdl/kdl.h"
#include "kdl/message.h"

namespace {

struct FieldCopy {
  uint32_t tag;
  std::vector<std::string> values;
};

// Reads every field and value back through the public API, walking the input
// alongside to know the tags; the library's counts must match the input's.
std::vector<FieldCopy> ReadAll(const KdlMsg* msg, const uint8_t* data, size_t size) {
  std::vector<FieldCopy> fields;
  uint32_t fieldCount = 0;
  std::memcpy(&fieldCount, data, 4); // the fuzz host is little-endian
  size_t at = 4;
  for (uint32_t i = 0; i < fieldCount; ++i) {
    uint32_t tag = 0, count = 0, reported = 0;
    std::memcpy(&tag, data + at, 4);
    std::memcpy(&count, data + at + 4, 4);
    at += 8;
    KdlError err{};
    if (!kdl_get_field(msg, tag, &reported, &err) || reported != count)
      std::abort();
    FieldCopy copy{tag, {}};
    for (uint32_t v = 0; v < count; ++v) {
      KdlValue value{};
      if (!kdl_get_data(msg, tag, v, &value, &err))
        std::abort();
      copy.values.emplace_back(value.data, value.length);
      at += 4 + value.length;
    }
    KdlValue none{};
    if (kdl_get_data(msg, tag, count, &none, &err) || err.code != KDL_E_NOTFOUND)
      std::abort();
    fields.push_back(std::move(copy));
  }
  if (at != size)
    std::abort();
  return fields;
}

void Rebuild(const std::vector<FieldCopy>& fields, const uint8_t* data, size_t size) {
  kdl::Message built(static_cast<uint32_t>(size));
  if (!built.valid())
    std::abort();
  for (const FieldCopy& f : fields) {
    if (f.values.empty() && !built.AddEmpty(f.tag))
      std::abort();
    for (const std::string& v : f.values)
      if (!built.Add(f.tag, v))
        std::abort();
  }
  const std::string_view bytes = built.Serialise();
  if (bytes.size() != size || std::memcmp(bytes.data(), data, size) != 0)
    std::abort();
  // The scratch was sized to fit exactly: another value must not fit, and
  // the failure must leave the message alone.
  if (built.Add(fields.empty() ? 0 : fields[0].tag, "") || built.lastError().code != KDL_E_FULL ||
      built.Serialise() != bytes)
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size > 1 << 20)
    return 0;
  KdlMsg* msg = nullptr;
  KdlError err{};
  if (!kdl_parse(data, static_cast<uint32_t>(size), &msg, &err)) {
    if (err.code != KDL_E_FORMAT || err.text[0] == '\0')
      std::abort();
    return 0;
  }
  const void* bytes = nullptr;
  uint32_t length = 0;
  if (!kdl_serialise(msg, &bytes, &length, &err) || length != size ||
      std::memcmp(bytes, data, size) != 0)
    std::abort();
  const std::vector<FieldCopy> fields = ReadAll(msg, data, size);
  kdl_dtor_primecb(&msg, &err);
  Rebuild(fields, data, size);

  // The same bytes as a stream of frames cut at an arbitrary point.
  std::string stream;
  kdl::AppendFrame(stream, std::string_view(reinterpret_cast<const char*>(data), size));
  kdl::FrameSplitter splitter(1 << 20);
  const size_t cut = data[size - 1] % (stream.size() + 1);
  std::string_view payload;
  splitter.Feed(stream.data(), cut);
  if (splitter.Next(&payload) != (cut == stream.size()))
    std::abort();
  if (cut < stream.size()) {
    splitter.Feed(stream.data() + cut, stream.size() - cut);
    if (!splitter.Next(&payload))
      std::abort();
  }
  if (payload.size() != size || std::memcmp(payload.data(), data, size) != 0)
    std::abort();
  return 0;
}
