// Answers as streams of framed records, produced as the connection drains
// so that a million-row answer never sits whole in memory.
//
// Every answer is data records (vh::kTagAnsweredName = the request
// answered, no vh::kTagStatus) closed by one status record (a status of
// "1", or a status without value for the lien report).
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kdl/message.h"
#include "kdl/tags.h"
#include "riskd/sqlite.h"

namespace riskd {

class Answer {
public:
  virtual ~Answer() = default;
  // Appends whole frames to `out` (never part of one: other frames are
  // pushed between two fills), stopping once about `budget` bytes were
  // added; at least one frame per call. Returns true while frames remain,
  // false once the last is out.
  virtual bool Fill(std::string& out, size_t budget) = 0;
};

// Builds records of one answered name in one reused message.
class RecordWriter {
public:
  explicit RecordWriter(std::string answered);

  // Starts a record that carries the answered name (and the sub-kind when
  // `subKind` is given).
  void Start(std::string_view subKind = {});
  void Add(uint32_t tag, std::string_view text);
  void Add(uint32_t tag, int64_t value) { Add(tag, std::string_view(std::to_string(value))); }
  void AddEmpty(uint32_t tag);
  // Frames the record onto `out`. A record that overflowed its buffer is
  // dropped whole (false), never sent half-filled.
  bool Emit(std::string& out);
  // The closing record: the status `code`, or a status without a value
  // when `code` is empty.
  void EmitStatus(std::string& out, std::string_view code = "1");

  const std::string& answered() const { return answered_; }

private:
  std::string answered_;
  std::optional<kdl::Message> msg_; // made on first use: queued answers cost no buffer
  bool failed_ = true;              // until Start
};

// Frames prepared up front (whole frames, as RecordWriter emits them); for
// answers of a few records.
class FramesAnswer : public Answer {
public:
  explicit FramesAnswer(std::string frames) : frames_(std::move(frames)) {}
  bool Fill(std::string& out, size_t budget) override;

private:
  std::string frames_;
  size_t sent_ = 0;
};

// A stepped statement: each row adds its fields to the open record, which is
// emitted every `rowsPerRecord` rows; then the status record closes it.
// `stmt` was prepared on `snapshot`, which the answer keeps (and with it
// one view of the store) until its last row is out.
class SqlAnswer : public Answer {
public:
  using RowFn = std::function<void(const Stmt& row, RecordWriter& record)>;
  SqlAnswer(std::shared_ptr<const Db> snapshot, Stmt stmt, std::string answered, RowFn row,
            std::string status = "1", int rowsPerRecord = 1, std::string subKind = {});
  bool Fill(std::string& out, size_t budget) override;

private:
  std::shared_ptr<const Db> snapshot_;
  Stmt stmt_;
  RecordWriter writer_;
  RowFn row_;
  std::string status_;
  std::string subKind_;
  int rowsPerRecord_;
  int inRecord_ = 0;
  bool done_ = false;
};

// The status record alone: an answer with no data.
std::unique_ptr<Answer> StatusOnly(std::string_view answered, std::string_view code = "1");

} // namespace riskd
