#include "riskd/connection.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

namespace riskd {
namespace {
constexpr size_t kReadChunk = 64 * 1024;
constexpr size_t kReadsPerTurn = 4; // so one fast sender cannot hold the loop
} // namespace

Connection::~Connection() {
  ::close(fd_);
}

void Connection::Refill(size_t lowWater) {
  while (queuedBytes() < lowWater && !answers_.empty()) {
    if (!answers_.front()->Fill(out_, lowWater - queuedBytes()))
      answers_.pop_front();
  }
}

bool Connection::Read() {
  char buf[kReadChunk];
  for (size_t turn = 0; turn < kReadsPerTurn; ++turn) {
    const ssize_t n = ::recv(fd_, buf, sizeof buf, 0);
    if (n > 0) {
      in_.Feed(buf, static_cast<size_t>(n));
      if (static_cast<size_t>(n) < sizeof buf)
        return true;
      continue;
    }
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
      return true;
    return false;
  }
  return true;
}

bool Connection::Write() {
  while (head_ < out_.size()) {
    const ssize_t n = ::send(fd_, out_.data() + head_, out_.size() - head_, MSG_NOSIGNAL);
    if (n > 0) {
      head_ += static_cast<size_t>(n);
      continue;
    }
    if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR))
      break;
    return false;
  }
  // Drop what was written once it is most of the buffer, so it never grows.
  if (head_ > 0 && head_ * 2 >= out_.size()) {
    out_.erase(0, head_);
    head_ = 0;
  }
  return true;
}

} // namespace riskd
