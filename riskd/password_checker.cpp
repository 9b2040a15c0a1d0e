#include "riskd/password_checker.h"

#include <utility>

#include "riskd/passwords.h"

namespace riskd {

PasswordChecker::PasswordChecker(std::function<void()> ready, size_t maxWaiting)
    : ready_(std::move(ready)), maxWaiting_(maxWaiting), thread_([this] { Run(); }) {}

PasswordChecker::~PasswordChecker() {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    stop_ = true;
  }
  wake_.notify_one();
  thread_.join();
}

bool PasswordChecker::Submit(uint64_t connection, std::string hash, std::string password) {
  {
    std::lock_guard<std::mutex> lock(mutex_);
    if (jobs_.size() >= maxWaiting_)
      return false;
    jobs_.push_back({connection, std::move(hash), std::move(password)});
  }
  wake_.notify_one();
  return true;
}

std::vector<PasswordChecker::Result> PasswordChecker::Take() {
  std::lock_guard<std::mutex> lock(mutex_);
  return std::exchange(results_, {});
}

void PasswordChecker::Run() {
  std::unique_lock<std::mutex> lock(mutex_);
  while (true) {
    wake_.wait(lock, [this] { return stop_ || !jobs_.empty(); });
    if (stop_)
      return;
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    const bool accepted = VerifyPassword(job.hash, job.password);
    lock.lock();
    results_.push_back({job.connection, accepted});
    lock.unlock();
    ready_();
    lock.lock();
  }
}

} // namespace riskd
