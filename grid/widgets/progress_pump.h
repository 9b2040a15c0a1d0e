// Keeps the window alive during a long pass over every row: the pass calls
// Step() per row; every few milliseconds the pump reports progress and lets
// the event loop paint. User input waits until the pass ends, so nothing
// the user does can change the rows under it.
#pragma once

#include <QElapsedTimer>

#include <functional>

namespace vh {

class ProgressPump {
public:
  // `report` gets (done, total) at each pump and once at the end.
  ProgressPump(int total, std::function<void(int, int)> report);
  ~ProgressPump();
  ProgressPump(const ProgressPump&) = delete;
  ProgressPump& operator=(const ProgressPump&) = delete;

  // Cheap on most calls: looks at the clock every 256 steps.
  void Step(int done) {
    done_ = done;
    if ((done & 0xFF) == 0)
      MaybePump(done);
  }
  // For waits without steps (a file being finished): pumps when due.
  void Idle() { MaybePump(done_); }
  // The longest time, in milliseconds, between two chances of the event
  // loop to run, over the pass so far.
  qint64 LongestStallMs() const { return longest_; }
  // Milliseconds between pumps.
  static constexpr qint64 kSliceMs = 30;

private:
  void MaybePump(int done);

  int total_;
  int done_ = 0;
  std::function<void(int, int)> report_;
  QElapsedTimer clock_;
  qint64 last_ = 0;
  qint64 longest_ = 0;
};

} // namespace vh
