// A C++ owner of one kdl message, for code that builds or reads messages
// without the plug-in's fixed call sequence (tests, the back-end, tools).
// The link keeps to the C calls, since the order of those calls is its
// contract with the host.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "kdl/kdl.h"

namespace kdl {

class Message {
public:
  static constexpr uint32_t kDefaultScratch = 4096;

  // A started, empty message in a scratch buffer of `scratchSize` bytes.
  // valid() is false when the handle or buffer could not be made.
  explicit Message(uint32_t scratchSize = kDefaultScratch);
  ~Message();
  Message(Message&& other) noexcept;
  Message& operator=(Message&& other) noexcept;
  Message(const Message&) = delete;
  Message& operator=(const Message&) = delete;

  // Parses `bytes`; nullopt (with *err filled when given) on any error.
  static std::optional<Message> Parse(std::string_view bytes, KdlError* err = nullptr);

  // A handle for reading only, to be filled by ParseInto; valid() is false
  // when it could not be made.
  static Message Reader();
  // Parses `bytes` into this message, reusing the memory of its earlier
  // parses (kdl_parse_into). False (with *err filled when given, and the
  // message then empty) on any error or for an invalid message.
  bool ParseInto(std::string_view bytes, KdlError* err = nullptr);

  bool valid() const { return msg_ != nullptr; }

  // Empties the message (builders only). Returns false on failure.
  bool Restart();
  // Appends one text value under `tag`. Returns false, message unchanged, on
  // failure (lastError() says why; KDL_E_FULL when the scratch is full, and
  // KDL_E_STATE for a parsed message).
  bool Add(uint32_t tag, std::string_view text);
  // Creates the field `tag` with no value. Same failures as Add.
  bool AddEmpty(uint32_t tag);

  // Number of values of `tag`; nullopt when the field is absent.
  std::optional<uint32_t> Count(uint32_t tag) const;
  // Value `index` of `tag` as a view into the message (valid until it
  // changes); nullopt when the field or the index is absent.
  std::optional<std::string_view> Text(uint32_t tag, uint32_t index = 0) const;

  // The encoded bytes (a view, valid until the message changes); empty on
  // failure.
  std::string_view Serialise() const;

  KdlMsg* get() const { return msg_; }
  const KdlError& lastError() const { return error_; }

private:
  struct Parsed {};
  explicit Message(Parsed) {}
  void Reset();

  KdlMsg* msg_ = nullptr;
  void* scratch_ = nullptr;
  mutable KdlError error_{};
};

} // namespace kdl
