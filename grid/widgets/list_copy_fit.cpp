// The passes over every row: clipboard copy and fitting widths. Both run
// with a ProgressPump so a million rows never freeze the window.
#include "grid/widgets/common_list_ctrl.h"

#include "grid/widgets/grid_commands.h"
#include "grid/widgets/progress_pump.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QProgressBar>

#include <algorithm>

namespace vh {
namespace {

constexpr int kFitFloor = 50;
// Room the view's own cell drawing leaves around a text.
constexpr int kCellPadding = 8;
constexpr size_t kChunkBytes = 1 << 20;
// Room kept when reserving the copied text from its first chunk.
constexpr double kReserveFactor = 1.1;
// Pixels a text's kerning might add over its characters' advances.
constexpr int kKerningSlack = 3;

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
    // A bar over the bottom of the rows rather than a window of its own:
    // a new top-level window costs more to show than a slice may take.
    progress_ = new QProgressBar(this);
    progress_->setTextVisible(false);
  }
  const int h = progress_->sizeHint().height();
  progress_->setGeometry(viewport()->x(), viewport()->y() + viewport()->height() - h,
                         viewport()->width(), h);
  progress_->setMaximum(total);
  progress_->setValue(done);
  progress_->show();
}

// The text is gathered as bytes in chunks and turned into one QString
// reserved from the first chunk's size, so a million rows never copy the
// whole text again on growth (each such copy is a long stall).
QString CCommonListCtrl::CopyToClipboard() {
  const auto spans = SelectedSpans(selectionModel());
  int total = 0;
  for (const auto& s : spans)
    total += s.second - s.first + 1;
  const int columns = HeaderItemCount();
  QString text;
  {
    ProgressPump pump(total, [this](int d, int t) { ReportProgress(d, t); });
    std::string chunk;
    size_t bytes = 0;
    int done = 0;
    const auto flush = [&] {
      if (text.isEmpty() && done > 0 && done < total)
        text.reserve(qsizetype(double(chunk.size()) / done * total * kReserveFactor));
      text += QString::fromUtf8(chunk.data(), qsizetype(chunk.size()));
      bytes += chunk.size();
      chunk.clear();
    };
    for (const auto& s : spans) {
      for (int row = s.first; row <= s.second; ++row) {
        for (int c = 0; c < columns; ++c) {
          chunk += GetCellBytes(row, c);
          chunk += '\t';
        }
        chunk += "\r\n";
        ++done;
        if (chunk.size() >= kChunkBytes)
          flush();
        pump.Step(done);
      }
    }
    flush();
  }
  if (QClipboard* clipboard = QGuiApplication::clipboard())
    clipboard->setText(text);
  return text;
}

// Most cells cannot be the widest: the sum of their characters' advances
// (what the text measures without kerning, which only narrows) is checked
// first, and only texts that could win are measured exactly.
int CCommonListCtrl::MeasureColumn(int headerItem, bool withHeader, ProgressPump& pump, int done) {
  const QFontMetrics fm(font());
  int advance[128];
  for (int ch = 0; ch < 128; ++ch)
    advance[ch] = fm.horizontalAdvance(QChar(ch));
  int width = 0;
  const int rows = DisplayedRowCount();
  for (int row = 0; row < rows; ++row) {
    const std::string text = GetCellBytes(row, headerItem);
    int estimate = 0;
    bool ascii = true;
    for (const char ch : text) {
      if (static_cast<unsigned char>(ch) >= 128) {
        ascii = false;
        break;
      }
      estimate += advance[int(ch)];
    }
    if (!ascii || estimate + kKerningSlack > width)
      width = std::max(
          width, fm.horizontalAdvance(QString::fromUtf8(text.data(), qsizetype(text.size()))));
    pump.Step(done + row + 1);
  }
  width += kCellPadding;
  // The header's own measure counts its label and the style's margins.
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
