#include "kdl/message.h"

#include <utility>

namespace kdl {

Message::Message(uint32_t scratchSize) {
  if (!kdl_ctor_primecb(&msg_, &error_))
    return;
  if (!kdl_open_scratch(&scratch_, scratchSize, &error_) || !kdl_start_msg(msg_, scratch_, &error_))
    Reset();
}

Message::~Message() {
  Reset();
}

Message::Message(Message&& other) noexcept
    : msg_(std::exchange(other.msg_, nullptr)), scratch_(std::exchange(other.scratch_, nullptr)),
      error_(other.error_) {}

Message& Message::operator=(Message&& other) noexcept {
  if (this != &other) {
    Reset();
    msg_ = std::exchange(other.msg_, nullptr);
    scratch_ = std::exchange(other.scratch_, nullptr);
    error_ = other.error_;
  }
  return *this;
}

void Message::Reset() {
  if (msg_)
    kdl_dtor_primecb(&msg_, nullptr);
  if (scratch_)
    kdl_close_scratch(&scratch_, nullptr);
}

std::optional<Message> Message::Parse(std::string_view bytes, KdlError* err) {
  Message m{Parsed{}};
  if (bytes.size() > UINT32_MAX) {
    if (err)
      *err = KdlError{KDL_E_TOOBIG, "more bytes than a message can hold"};
    return std::nullopt;
  }
  if (!kdl_parse(bytes.data(), static_cast<uint32_t>(bytes.size()), &m.msg_, err))
    return std::nullopt;
  return m;
}

Message Message::Reader() {
  Message m{Parsed{}};
  if (!kdl_ctor_primecb(&m.msg_, &m.error_))
    m.msg_ = nullptr;
  return m;
}

bool Message::ParseInto(std::string_view bytes, KdlError* err) {
  if (bytes.size() > UINT32_MAX) {
    if (err)
      *err = KdlError{KDL_E_TOOBIG, "more bytes than a message can hold"};
    return false;
  }
  return kdl_parse_into(msg_, bytes.data(), static_cast<uint32_t>(bytes.size()), err) != 0;
}

bool Message::Restart() {
  if (!scratch_) {
    error_ = KdlError{KDL_E_STATE, "not a message under construction"};
    return false;
  }
  return kdl_start_msg(msg_, scratch_, &error_) != 0;
}

bool Message::Add(uint32_t tag, std::string_view text) {
  if (text.size() > UINT32_MAX) {
    error_ = KdlError{KDL_E_TOOBIG, "value longer than 2^32-1 bytes"};
    return false;
  }
  const KdlValue value{text.data(), static_cast<uint32_t>(text.size())};
  return kdl_add_data(msg_, tag, 1, &value, &error_) != 0;
}

bool Message::AddEmpty(uint32_t tag) {
  return kdl_add_data(msg_, tag, 0, nullptr, &error_) != 0;
}

std::optional<uint32_t> Message::Count(uint32_t tag) const {
  uint32_t count = 0;
  if (!kdl_get_field(msg_, tag, &count, &error_))
    return std::nullopt;
  return count;
}

std::optional<std::string_view> Message::Text(uint32_t tag, uint32_t index) const {
  KdlValue value{};
  if (!kdl_get_data(msg_, tag, index, &value, &error_))
    return std::nullopt;
  return std::string_view(value.data, value.length);
}

std::string_view Message::Serialise() const {
  const void* bytes = nullptr;
  uint32_t length = 0;
  if (!kdl_serialise(msg_, &bytes, &length, &error_))
    return {};
  return std::string_view(static_cast<const char*>(bytes), length);
}

} // namespace kdl
