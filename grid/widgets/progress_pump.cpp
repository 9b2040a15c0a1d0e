#include "grid/widgets/progress_pump.h"

#include <QCoreApplication>

#include <algorithm>

namespace vh {

ProgressPump::ProgressPump(int total, std::function<void(int, int)> report)
    : total_(total), report_(std::move(report)) {
  clock_.start();
}

ProgressPump::~ProgressPump() {
  longest_ = std::max(longest_, clock_.elapsed() - last_);
  if (report_)
    report_(total_, total_);
}

void ProgressPump::MaybePump(int done) {
  const qint64 now = clock_.elapsed();
  if (now - last_ < kSliceMs)
    return;
  longest_ = std::max(longest_, now - last_);
  if (report_)
    report_(done, total_);
  QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
  last_ = clock_.elapsed();
}

} // namespace vh
