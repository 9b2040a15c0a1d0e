#include "tests/link/fake_backend.h"

#include <gtest/gtest.h>

#include "kdl/message.h"

namespace linktest {

FakeBackendControl* g_control = nullptr;

namespace {

uint32_t U32At(std::string_view bytes, size_t at) {
  const auto* p = reinterpret_cast<const unsigned char*>(bytes.data() + at);
  return uint32_t(p[0]) | uint32_t(p[1]) << 8 | uint32_t(p[2]) << 16 | uint32_t(p[3]) << 24;
}

// Walks an encoding the parser has accepted, so every offset is in range.
Fields Decode(std::string_view bytes) {
  Fields fields;
  size_t at = 4;
  for (uint32_t f = U32At(bytes, 0); f > 0; --f) {
    fields.push_back({U32At(bytes, at), {}});
    const uint32_t count = U32At(bytes, at + 4);
    at += 8;
    for (uint32_t v = 0; v < count; ++v) {
      const uint32_t length = U32At(bytes, at);
      fields.back().second.emplace_back(bytes.substr(at + 4, length));
      at += 4 + length;
    }
  }
  return fields;
}

} // namespace

int FakeBackendControl::Send(uint64_t* outSlot, KdlMsg* msg, int zero, KdlError* err) {
  EXPECT_EQ(zero, 0) << "the back-end's send takes 0 as its third argument";
  if (failSends) {
    *err = KdlError{KDL_E_STATE, "fake back-end refuses"};
    return 0;
  }
  const void* bytes = nullptr;
  uint32_t length = 0;
  if (!kdl_serialise(msg, &bytes, &length, err))
    return 0;
  const std::string_view view(static_cast<const char*>(bytes), length);
  if (!kdl::Message::Parse(view, err))
    return 0;
  sent.push_back(Decode(view));
  if (outSlot)
    *outSlot = sent.size();
  return 1;
}

} // namespace linktest

extern "C" __attribute__((visibility("default"))) TarnBackendControl*
GetBrioRxControl(int zero, CBrioRxNotifierBase* receiver) {
  using namespace linktest;
  EXPECT_EQ(zero, 0) << "GetBrioRxControl takes 0 as its first argument";
  if (g_control)
    g_control->Attach(receiver);
  return g_control;
}
