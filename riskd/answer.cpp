#include "riskd/answer.h"

#include <sqlite3.h>

#include <algorithm>

#include "kdl/frame.h"

namespace riskd {
namespace {
// Records hold at most a few hundred short values; anything larger is refused
// by the message itself rather than growing without bound.
constexpr uint32_t kRecordScratch = 64 * 1024;
} // namespace

RecordWriter::RecordWriter(std::string answered) : answered_(std::move(answered)) {}

void RecordWriter::Start(std::string_view subKind) {
  if (!msg_)
    msg_.emplace(kRecordScratch);
  failed_ = !msg_->valid() || !msg_->Restart() || !msg_->Add(vh::kTagAnsweredName, answered_);
  if (!subKind.empty())
    Add(vh::kTagSubKind, subKind);
}

void RecordWriter::Add(uint32_t tag, std::string_view text) {
  if (!failed_ && !msg_->Add(tag, text))
    failed_ = true;
}

void RecordWriter::AddEmpty(uint32_t tag) {
  if (!failed_ && !msg_->AddEmpty(tag))
    failed_ = true;
}

bool RecordWriter::Emit(std::string& out) {
  if (failed_ || !msg_)
    return false;
  return kdl::AppendFrame(out, msg_->Serialise());
}

void RecordWriter::EmitStatus(std::string& out, std::string_view code) {
  Start();
  if (code.empty())
    AddEmpty(vh::kTagStatus);
  else
    Add(vh::kTagStatus, code);
  Emit(out);
}

bool FramesAnswer::Fill(std::string& out, size_t budget) {
  // Whole frames only: ticks are pushed between two fills, so a frame cut
  // here would have a tick inside it. At least one frame goes each time.
  size_t end = sent_;
  while (end < frames_.size() && (end == sent_ || end - sent_ < budget)) {
    end += kdl::kFrameHeader + kdl::LoadLength(frames_.data() + end);
  }
  out.append(frames_, sent_, end - sent_);
  sent_ = end;
  return sent_ < frames_.size();
}

SqlAnswer::SqlAnswer(std::shared_ptr<const Db> snapshot, Stmt stmt, std::string answered, RowFn row,
                     std::string status, int rowsPerRecord, std::string subKind)
    : snapshot_(std::move(snapshot)), stmt_(std::move(stmt)), writer_(std::move(answered)),
      row_(std::move(row)), status_(std::move(status)), subKind_(std::move(subKind)),
      rowsPerRecord_(rowsPerRecord < 1 ? 1 : rowsPerRecord) {}

bool SqlAnswer::Fill(std::string& out, size_t budget) {
  if (done_)
    return false;
  const size_t start = out.size();
  while (out.size() - start < budget) {
    if (stmt_.Step() != SQLITE_ROW) {
      // A failed step ends the answer like the last row does; the status
      // record still closes it so the reader is never left waiting.
      if (inRecord_ > 0)
        writer_.Emit(out);
      writer_.EmitStatus(out, status_);
      stmt_ = Stmt(); // releases the read snapshot at once
      snapshot_.reset();
      done_ = true;
      return false;
    }
    if (inRecord_ == 0)
      writer_.Start(subKind_);
    row_(stmt_, writer_);
    if (++inRecord_ == rowsPerRecord_) {
      writer_.Emit(out);
      inRecord_ = 0;
    }
  }
  return true;
}

std::unique_ptr<Answer> StatusOnly(std::string_view answered, std::string_view code) {
  RecordWriter w{std::string(answered)};
  std::string frames;
  w.EmitStatus(frames, code);
  return std::make_unique<FramesAnswer>(std::move(frames));
}

} // namespace riskd
