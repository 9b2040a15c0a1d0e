// One client connection of the server loop: bytes in, answers out.
#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <memory>
#include <optional>
#include <string>

#include "kdl/frame.h"
#include "riskd/handlers.h"

namespace riskd {

class Connection {
public:
  // `loginBy`: when the connection is closed unless logged in.
  Connection(int fd, uint64_t id, uint32_t maxFrame, std::chrono::steady_clock::time_point loginBy)
      : fd_(fd), id_(id), in_(maxFrame), loginBy_(loginBy) {}
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  int fd() const { return fd_; }
  uint64_t id() const { return id_; }
  kdl::FrameSplitter& in() { return in_; }
  Subscription& subscription() { return sub_; }

  // Bytes framed but not yet written.
  size_t queuedBytes() const { return out_.size() - head_; }
  size_t queuedAnswers() const { return answers_.size(); }
  void Queue(std::unique_ptr<Answer> answer) { answers_.push_back(std::move(answer)); }
  // Appends frames pushed outside any answer (price ticks).
  void Push(const std::string& frames) { out_ += frames; }
  // Lets the queued answers add frames until `lowWater` bytes wait.
  void Refill(size_t lowWater);
  // Reads what arrived; false on end of stream or a read error.
  bool Read();
  // Writes what the socket takes; false on a write error.
  bool Write();

  // The user the connection logged in as; nullopt until then.
  const std::optional<User>& user() const { return user_; }
  void LogIn(User user) { user_ = std::move(user); }
  // From now on input is dropped; the connection closes once what is queued
  // has been written.
  void CloseWhenWritten() { closing_ = true; }
  bool closing() const { return closing_; }
  bool written() const { return queuedBytes() == 0 && answers_.empty(); }
  std::chrono::steady_clock::time_point loginBy() const { return loginBy_; }
  // The login's password is being checked; input waits meanwhile.
  bool checkingPassword = false;
  // A refused login is answered at this time, not at once.
  std::optional<std::chrono::steady_clock::time_point> refuseAt;

private:
  int fd_;
  uint64_t id_;
  kdl::FrameSplitter in_;
  std::string out_;
  size_t head_ = 0;
  std::deque<std::unique_ptr<Answer>> answers_;
  Subscription sub_;
  std::optional<User> user_;
  std::chrono::steady_clock::time_point loginBy_;
  bool closing_ = false;
};

} // namespace riskd
