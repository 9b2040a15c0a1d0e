#include "grid/widgets/row_delegate.h"

#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"

#include <QLinearGradient>
#include <QPainter>
#include <QStyleOptionButton>

namespace vh {
namespace {

constexpr int kTextMargin = 3;
constexpr int kIconWidth = 30;
const QColor kFocusTop(82, 123, 225);
const QColor kFocusBottom(60, 166, 255);
const QColor kBlurTop(126, 126, 126);
const QColor kBlurBottom(0, 0, 0);

QColor FromColourRef(int32_t c) {
  const auto u = uint32_t(c);
  return QColor(int(u & 0xFF), int((u >> 8) & 0xFF), int((u >> 16) & 0xFF));
}

// Less one pixel at the right and bottom, as the old gradient fill drew.
void FillGradient(QPainter* painter, const QRect& rect, const QColor& top, const QColor& bottom) {
  const QRect r = rect.adjusted(0, 0, -1, -1);
  QLinearGradient gradient(r.topLeft(), r.bottomLeft());
  gradient.setColorAt(0, top);
  gradient.setColorAt(1, bottom);
  painter->fillRect(rect, top);
  painter->fillRect(r, gradient);
}

Qt::Alignment AlignmentOf(int format) {
  switch (format) {
  case kFormatLeft:
    return Qt::AlignLeft | Qt::AlignVCenter;
  case kFormatRight:
    return Qt::AlignRight | Qt::AlignVCenter;
  default:
    return Qt::AlignHCenter | Qt::AlignVCenter;
  }
}

} // namespace

void FillRowBackground(QPainter* painter, const QRect& rect, const QColor& colour, bool gradient) {
  if (gradient)
    FillGradient(painter, rect, colour, Qt::white);
  else
    painter->fillRect(rect, colour);
}

RowDelegate::RowDelegate(CFilterListCtrl* grid) : QAbstractItemDelegate(grid), grid_(grid) {}

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QString text = index.data().toString();
  return QSize(option.fontMetrics.horizontalAdvance(text) + 2 * kTextMargin,
               option.fontMetrics.height() + 1);
}

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
  RowEngine& engine = grid_->Engine();
  const int row = grid_->Model().EngineRow(index.row());
  if (row < 0 || row >= engine.DisplayedCount())
    return;
  if (index.row() != cachedRow_ || grid_->PaintCount() != cachedPaint_) {
    cached_ = grid_->ColoursOfRow(index.row());
    cachedRow_ = index.row();
    cachedPaint_ = grid_->PaintCount();
  }
  const CFilterListCtrl::RowColours& colours = cached_;
  const bool selected = option.state & QStyle::State_Selected;
  const QRect rect = option.rect;
  painter->setFont(option.font);
  if (selected) {
    const bool focus = grid_->hasFocus();
    FillGradient(painter, rect, focus ? kFocusTop : kBlurTop, focus ? kFocusBottom : kBlurBottom);
  } else {
    FillRowBackground(painter, rect, colours.background, grid_->Gradient());
  }
  if (colours.itemData == 0)
    return; // a row without item data gets its background only

  const int column = engine.DataColumnAt(index.column());
  const sTarnColInfo* info = engine.ColumnInfo(column);
  std::string text;
  CellStyle style;
  if (!info || !engine.GetCellText(colours.itemData, column, text, style))
    return;
  QColor pen = colours.text;
  if (style.textColour != -1 && column != 0)
    pen = FromColourRef(style.textColour);
  if (selected)
    pen = Qt::white;
  painter->setPen(pen);

  QRect textRect = rect.adjusted(kTextMargin, 0, -kTextMargin, 0);
  if (index.column() == 0 && grid_->CheckBoxes()) {
    QStyleOptionButton box;
    box.rect = CFilterListCtrl::CheckBoxRect(rect);
    box.state =
        QStyle::State_Enabled | (engine.GetCheck(row) ? QStyle::State_On : QStyle::State_Off);
    grid_->style()->drawPrimitive(QStyle::PE_IndicatorCheckBox, &box, painter, grid_);
    textRect.setLeft(box.rect.right() + kTextMargin);
  }
  const QString qtext = QString::fromStdString(text);
  if (info->nFormat == kFormatImage) {
    if (style.image > 0) {
      const QList<QIcon>& icons = grid_->ImageList();
      if (style.image < icons.size()) {
        const QRect iconRect(rect.right() - kIconWidth + 1, rect.top(), kIconWidth, rect.height());
        icons[style.image].paint(painter, iconRect);
      } else {
        painter->drawText(rect, Qt::AlignCenter, QStringLiteral("Failed to draw icon"));
      }
    }
    return;
  }
  // One measurement and a plain draw: the layout path of drawText with a
  // rectangle costs more than the rest of a cell together.
  const QFontMetrics& fm = option.fontMetrics;
  const int room = std::max(0, textRect.width());
  int width = fm.horizontalAdvance(qtext);
  QString shown = qtext;
  if (width > room) {
    shown = fm.elidedText(qtext, Qt::ElideRight, room);
    width = fm.horizontalAdvance(shown);
  }
  const Qt::Alignment align = AlignmentOf(info->nFormat);
  const int x = align & Qt::AlignLeft    ? textRect.left()
                : align & Qt::AlignRight ? textRect.right() + 1 - width
                                         : textRect.left() + (room - width) / 2;
  const int y = rect.top() + (rect.height() - fm.height()) / 2 + fm.ascent();
  painter->drawText(QPoint(x, y), shown);
}

} // namespace vh
