// What a host asks of the view by name: the headless run's column work,
// done through the same grid operations a user's clicks reach.
#include <QApplication>
#include <QHeaderView>
#include <QMouseEvent>

#include "grid/user_column_editor.h"
#include "grid/user_column_expression.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "holdings/view/view_hold.h"
#include "widgets/filter_header.h"

namespace vh {

QStringList CViewHold::HeaderNames() const {
  QStringList names;
  const QHeaderView* header = holdingsGrid_->horizontalHeader();
  for (int v = 0; v < header->count(); ++v)
    names << holdingsGrid_->HeaderItemText(header->logicalIndex(v));
  return names;
}

int CViewHold::HeaderItemOf(const QString& column) const {
  for (int item = 0; item < holdingsGrid_->HeaderItemCount(); ++item)
    if (holdingsGrid_->HeaderItemText(item).compare(column, Qt::CaseInsensitive) == 0)
      return item;
  return -1;
}

QString CViewHold::AddCustomColumn(const QString& name, const QString& displayExpression) {
  const std::string n = TrimBlanks(name.toStdString());
  if (n.empty())
    return QString::fromLatin1(kMsgEnterColumnName.data(), qsizetype(kMsgEnterColumnName.size()));
  if (n.size() > kMaxCustomColumnName)
    return QString::fromLatin1(kMsgNameTooLong.data(), qsizetype(kMsgNameTooLong.size()));
  if (HeaderItemOf(QString::fromStdString(n)) >= 0 || holdingsGrid_->FindColumnByName(n) != nullptr)
    return QString::fromLatin1(kMsgNameTaken.data(), qsizetype(kMsgNameTaken.size()));
  std::vector<sTarnColInfo> table;
  for (int c = 0; c < holdingsGrid_->Engine().ColumnCount(); ++c)
    table.push_back(*holdingsGrid_->Engine().ColumnInfo(c));
  ConvertedExpression converted;
  if (!CheckDisplayExpression(displayExpression.toStdString(), NumericColumns(table), converted))
    return QString("%1: %2").arg(
        QString::fromLatin1(kMsgInvalidExpression.data(), qsizetype(kMsgInvalidExpression.size())),
        displayExpression);
  sTarnColInfo info;
  info.SetName(n);
  info.nWidth = kCustomColumnWidth;
  info.nFormat = kCustomColumnFormat;
  info.nType = kCustomColumnType;
  info.strExpression = converted.stored;
  info.strDisplayExpression = displayExpression.toStdString();
  (void)holdingsGrid_->InsertCustomColumn(info);
  return {};
}

bool CViewHold::FilterColumn(const QString& column, const QString& text) {
  const int item = HeaderItemOf(column);
  if (item < 0)
    return false;
  if (!holdingsGrid_->FilterBarShown())
    holdingsGrid_->ToggleFilterBar();
  holdingsGrid_->Engine().OnHeaderFilterChanged(item, text.toStdString());
  holdingsGrid_->FilterHeader()->SetFilterText(item, text);
  return true;
}

bool CViewHold::ClickHeader(const QString& column) {
  const int item = HeaderItemOf(column);
  if (item < 0)
    return false;
  QHeaderView* header = holdingsGrid_->horizontalHeader();
  // The label's row of the header, above any filter field.
  const QPoint at(header->sectionViewportPosition(item) + header->sectionSize(item) / 2, 6);
  const QPoint global = header->viewport()->mapToGlobal(at);
  QMouseEvent press(QEvent::MouseButtonPress, at, global, Qt::LeftButton, Qt::LeftButton,
                    Qt::NoModifier);
  QMouseEvent release(QEvent::MouseButtonRelease, at, global, Qt::LeftButton, Qt::NoButton,
                      Qt::NoModifier);
  QApplication::sendEvent(header->viewport(), &press);
  QApplication::sendEvent(header->viewport(), &release);
  return true;
}

int CViewHold::SortDirection() const {
  const int item = holdingsGrid_->Engine().SortColumn();
  if (item < 0 || item >= holdingsGrid_->HeaderItemCount())
    return 0;
  const int image = holdingsGrid_->FilterHeader()->SectionImage(item);
  return image == 0 ? 1 : image == 1 ? -1 : 0;
}

int CViewHold::ExportGrid(const QString& path) {
  return holdingsGrid_->ExportToExcel(path.toStdString());
}

int CViewHold::DisplayedRows() const {
  return holdingsGrid_->Engine().DisplayedCount();
}

} // namespace vh
