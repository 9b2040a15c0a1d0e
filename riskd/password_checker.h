// Checks passwords on a thread of its own: a slow hash takes a tenth of a
// second, and the server loop must not stall for it while it streams.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace riskd {

class PasswordChecker {
public:
  struct Result {
    uint64_t connection;
    bool accepted;
  };

  // `ready` is called on the checker's thread after each result; the owner
  // then collects it with Take on its own thread. At most `maxWaiting` jobs
  // wait at once.
  PasswordChecker(std::function<void()> ready, size_t maxWaiting);
  ~PasswordChecker(); // finishes the job under way and joins
  PasswordChecker(const PasswordChecker&) = delete;
  PasswordChecker& operator=(const PasswordChecker&) = delete;

  // Queues checking `password` against `hash` (crypto_pwhash_str form) for
  // `connection`. False, nothing queued, when maxWaiting jobs already wait.
  [[nodiscard]] bool Submit(uint64_t connection, std::string hash, std::string password);
  // The results so far, oldest first.
  std::vector<Result> Take();

private:
  struct Job {
    uint64_t connection;
    std::string hash, password;
  };
  void Run();

  std::function<void()> ready_;
  size_t maxWaiting_;
  std::mutex mutex_;
  std::condition_variable wake_;
  std::deque<Job> jobs_;
  std::vector<Result> results_;
  bool stop_ = false;
  std::thread thread_; // last: starts once the rest is made
};

} // namespace riskd
