// The passes over every row: clipboard copy and fitting widths. Both run
// with a ProgressPump so a million rows never freeze the window.
#include "grid/widgets/common_list_ctrl.h"

#include "grid/widgets/grid_commands.h"
#include "grid/widgets/progress_pump.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>

#include <algorithm>

namespace vh {
namespace {

constexpr int kFitFloor = 50;
// Room the view's own cell drawing leaves around a text.
constexpr int kCellPadding = 8;

// Selected rows as ascending [top, bottom] spans, merged.
std::vector<std::pair<int, int>> SelectedSpans(const QItemSelectionModel* selection) {
  std::vector<std::pair<int, int>> spans;
  if (!selection)
    return spans;
  for (const QItemSelectionRange& r : selection->selection())
    spans.emplace_back(r.top(), r.bottom());
  std::sort(spans.begin(), spans.end());
  std::vector<std::pair<int, int>> merged;
  for (const auto& s : spans) {
    if (!merged.empty() && s.first <= merged.back().second + 1)
      merged.back().second = std::max(merged.back().second, s.second);
    else
      merged.push_back(s);
  }
  return merged;
}

} // namespace

void CCommonListCtrl::ReportProgress(int done, int total) {
  emit ProgressChanged(done, total);
  if (done >= total) {
    if (progress_)
      progress_->hide();
    return;
  }
  if (!progress_) {
    progress_ = new QProgressDialog(this);
    progress_->setCancelButton(nullptr);
    progress_->setWindowModality(Qt::NonModal);
    progress_->setAutoReset(false);
    progress_->setAutoClose(false);
    progress_->setMinimumDuration(0);
  }
  progress_->setMaximum(total);
  progress_->setValue(done);
  progress_->show();
}

QString CCommonListCtrl::CopyToClipboard() {
  const auto spans = SelectedSpans(selectionModel());
  int total = 0;
  for (const auto& s : spans)
    total += s.second - s.first + 1;
  const int columns = HeaderItemCount();
  QString text;
  {
    ProgressPump pump(total, [this](int d, int t) { ReportProgress(d, t); });
    int done = 0;
    for (const auto& s : spans) {
      for (int row = s.first; row <= s.second; ++row) {
        for (int c = 0; c < columns; ++c) {
          text += GetCellText(row, c);
          text += QLatin1Char('\t');
        }
        text += QLatin1String("\r\n");
        pump.Step(++done);
      }
    }
  }
  if (QClipboard* clipboard = QGuiApplication::clipboard())
    clipboard->setText(text);
  return text;
}

int CCommonListCtrl::MeasureColumn(int headerItem, bool withHeader, ProgressPump& pump, int done) {
  const QFontMetrics fm(font());
  int width = 0;
  const int rows = DisplayedRowCount();
  for (int row = 0; row < rows; ++row) {
    width = std::max(width, fm.horizontalAdvance(GetCellText(row, headerItem)));
    pump.Step(done + row + 1);
  }
  width += kCellPadding;
  // The header's own measure counts its label, its mark and the style's
  // margins.
  if (withHeader)
    width = std::max(width, horizontalHeader()->sectionSizeHint(headerItem) +
                                HeaderImageList::kWidth + kCellPadding);
  return width;
}

void CCommonListCtrl::FitColumns(int mode) {
  const int columns = HeaderItemCount();
  const int rows = DisplayedRowCount();
  const bool measures = mode != kFitWindow;
  ProgressPump pump(measures ? rows * columns : 0, [this](int d, int t) { ReportProgress(d, t); });
  setUpdatesEnabled(false);
  for (int c = 0; c < columns; ++c) {
    int width = kFitFloor;
    if (mode == kFitWindow) {
      // Kept: this mode has no floor, so columns may end narrower than 50.
      const int client = viewport()->width();
      width = client > 0 && columns > 0 ? client / columns : kFitFloor;
    } else {
      // The header width includes the data, and the larger of the two is
      // the header width, so one measurement serves every mode but data.
      width = std::max(MeasureColumn(c, mode != kFitData, pump, c * rows), kFitFloor);
    }
    horizontalHeader()->resizeSection(c, width);
  }
  setUpdatesEnabled(true);
  horizontalHeader()->viewport()->update();
  viewport()->update();
}

} // namespace vh
