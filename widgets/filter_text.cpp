#include "widgets/filter_text.h"

#include <QEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QListView>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>

#include <algorithm>

#include "grid/filter_join.h"
#include "plugin/tarn_host_api.h"
#include "widgets/distinct_value_model.h"
#include "widgets/sorted_values.h"

namespace vh {
namespace {

// Size of the pop-up in average characters and lines of the list's font.
constexpr int kWidthChars = 28;
constexpr int kHeightLines = 16;

} // namespace

CFilterText::CFilterText(QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint), model_(new DistinctValueModel(this)),
      list_(new QListView(this)), cancel_(new QPushButton(QStringLiteral("Cancel"), this)) {
  SetControlId(this, kFilterTextDialogId);
  SetControlId(list_, kFilterTextListId);
  SetControlId(cancel_, kFilterTextCancelId);
  list_->setModel(model_);
  // Uniform sizes keep the layout of a million rows from measuring each one.
  list_->setUniformItemSizes(true);
  list_->setSelectionMode(QAbstractItemView::ExtendedSelection);
  list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  list_->installEventFilter(this);
  cancel_->hide();

  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(1, 1, 1, 1);
  layout->addWidget(list_);

  const QFontMetrics metrics = list_->fontMetrics();
  resize(metrics.averageCharWidth() * kWidthChars, metrics.height() * kHeightLines);

  connect(list_, &QListView::doubleClicked, this, [this](const QModelIndex&) { Apply(); });
  connect(cancel_, &QPushButton::clicked, this, &CFilterText::Cancel);
}

CFilterText::~CFilterText() = default;

void CFilterText::Popup(std::vector<std::string> values, int column, QPoint globalPos) {
  column_ = column;
  std::vector<uint32_t> order = SortedValueOrder(values);
  model_->SetValues(std::move(values), std::move(order));
  list_->scrollToTop();

  QScreen* screen = QGuiApplication::screenAt(globalPos);
  if (screen == nullptr)
    screen = QGuiApplication::primaryScreen();
  if (screen != nullptr) {
    const QRect area = screen->availableGeometry();
    globalPos.setX(std::max(area.left(), std::min(globalPos.x(), area.right() + 1 - width())));
    globalPos.setY(std::max(area.top(), std::min(globalPos.y(), area.bottom() + 1 - height())));
  }
  move(globalPos);
  show();
  raise();
  activateWindow();
  list_->setFocus();
}

void CFilterText::hideEvent(QHideEvent* event) {
  // A million texts take a while to free; done on closing, not on the next
  // opening, which must be quick.
  model_->SetValues({});
  QWidget::hideEvent(event);
}

bool CFilterText::event(QEvent* event) {
  if (event->type() == QEvent::WindowDeactivate && isVisible())
    Cancel();
  return QWidget::event(event);
}

bool CFilterText::eventFilter(QObject* watched, QEvent* event) {
  if (watched == list_ && event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key == Qt::Key_Return || key == Qt::Key_Enter) {
      Apply();
      return true;
    }
    if (key == Qt::Key_Escape) {
      cancel_->click();
      return true;
    }
  }
  return QWidget::eventFilter(watched, event);
}

void CFilterText::Apply() {
  QModelIndexList rows = list_->selectionModel()->selectedRows();
  std::sort(rows.begin(), rows.end(),
            [](const QModelIndex& a, const QModelIndex& b) { return a.row() < b.row(); });
  std::vector<std::string> picked;
  picked.reserve(static_cast<size_t>(rows.size()));
  for (const QModelIndex& index : rows)
    picked.push_back(model_->Value(index.row()));
  const std::string joined = JoinFilterTexts(picked);
  hide();
  emit Applied(column_, QString::fromUtf8(joined));
}

void CFilterText::Cancel() {
  hide();
}

} // namespace vh
