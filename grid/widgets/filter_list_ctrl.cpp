#include "grid/widgets/filter_list_ctrl.h"

#include "grid/custom_column.h"
#include "grid/widgets/filter_list_columns.h"
#include "grid/widgets/filter_list_model.h"
#include "grid/widgets/grid_commands.h"
#include "grid/widgets/row_delegate.h"
#include "widgets/filter_header.h"
#include "widgets/filter_text.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QMenu>
#include <QMouseEvent>
#include <QPointer>
#include <QScrollBar>

namespace vh {
namespace {

constexpr int kFilterDelayMs = 500;
constexpr int kCheckBoxSide = 13;

struct FilterShared {
  QPointer<CFilterText> popup;
  QMetaObject::Connection applied;
  GridDialogFactory editorFactory;
  std::unique_ptr<GridDialog> editor;
};

FilterShared& Shared() {
  static FilterShared shared;
  return shared;
}

} // namespace

CFilterListCtrl::CFilterListCtrl(QWidget* parent)
    : CCommonListCtrl(parent), header_(new CFilterHeader(this)),
      columnEdit_(std::make_unique<FilterListColumns>(*this)) {
  model_ = std::make_unique<FilterListModel>(engine_, static_cast<RowEngineObserver*>(this));
  engine_.SetCustomColumnCompiler(&CompileCustomColumn);
  setHorizontalHeader(header_);
  header_->setSectionsMovable(true);
  header_->setSectionsClickable(true);
  header_->setHighlightSections(false);
  header_->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header_, &QWidget::customContextMenuRequested, this, [this](const QPoint& p) {
    // The base connected the default header; the menu is the same.
    OpenHeaderMenuAt(header_->mapToGlobal(p));
  });
  header_->SetImages(HeaderImages().images);
  // The header and its filter fields keep the desktop's colours, not the
  // grid's green on black; the two roles the grid sets are set here too, so
  // they are not inherited.
  QPalette desktop = QApplication::palette();
  desktop.setColor(QPalette::Base, desktop.color(QPalette::Base));
  desktop.setColor(QPalette::Text, desktop.color(QPalette::Text));
  header_->setPalette(desktop);
  setModel(model_.get());
  setItemDelegate(new RowDelegate(this));
  connect(model_.get(), &QAbstractItemModel::rowsAboutToBeRemoved, this,
          [this](const QModelIndex&, int first, int) {
            deletedWasSelected_ = selectionModel()->isRowSelected(first, {});
          });

  connect(header_, &QHeaderView::sectionClicked, this,
          [this](int section) { engine_.SortOnColumn(section); });
  connect(header_, &CFilterHeader::FilterChanged, this, [this](int section, const QString& text) {
    engine_.OnHeaderFilterChanged(section, text.toStdString());
    emit FilterChanged(section, text);
  });
  connect(header_, &CFilterHeader::FilterButtonClicked, this,
          [this](int section, const QPoint& pos) {
            emit FilterButtonClicked(section);
            PopupDistinctValues(section, pos);
          });
  connect(header_, &CFilterHeader::ToggleRequested, this, [this] {
    setFocus(Qt::ShortcutFocusReason);
    ToggleFilterBar();
  });
  connect(header_, &CFilterHeader::FieldFocused, this, &CFilterListCtrl::ScrollFieldIntoView);
  connect(horizontalScrollBar(), &QScrollBar::valueChanged, header_, &CFilterHeader::PlaceFields);
  // The editors see columns where the user dragged them; not while
  // ColumnsReset undoes the drags, as the editors' change is still being
  // installed then and a resync would drop its pending widths and tips.
  connect(header_, &QHeaderView::sectionMoved, this, [this] {
    if (!restoringOrder_)
      columnEdit_->Sync();
  });
}

CFilterListCtrl::~CFilterListCtrl() {
  if (columnsInstalled_)
    (void)SaveColumnProfile();
  // The model goes before the view's own destructor runs.
  setModel(nullptr);
  if (Shared().editor)
    Shared().editor->GridDestroyed(this);
}

void CFilterListCtrl::SetUpColumns(std::vector<sTarnColInfo> columns, int sortColumn) {
  const int builtin = int(columns.size());
  engine_.SetColumns(std::move(columns), builtin);
  ColumnsReset();
  std::vector<int> widths;
  for (int c = 0; c < engine_.ColumnCount(); ++c)
    widths.push_back(engine_.ColumnInfo(c)->nWidth);
  ApplyWidths(widths);
  columnsInstalled_ = true;
  (void)LoadColumnProfile();
  ReadDefaultSort();
  const int defaultItem = engine_.ColumnPosition(defaultSortColumn_);
  if (defaultItem >= 0)
    sortColumn = defaultItem;
  SetInitialSortColumn(sortColumn);
  engine_.SetSortState(sortColumn);
  SetUp();
  columnEdit_->Sync();
}

void CFilterListCtrl::ApplyWidths(const std::vector<int>& widthOfColumn) {
  for (int c = 0; c < engine_.ColumnCount() && size_t(c) < widthOfColumn.size(); ++c) {
    const int position = engine_.ColumnPosition(c);
    if (position >= 0 && widthOfColumn[size_t(c)] > 0)
      header_->resizeSection(position, widthOfColumn[size_t(c)]);
  }
}

void CFilterListCtrl::DeleteAllItems() {
  engine_.DeleteAllItems();
  model_->OnRowsReset();
}

// --- columns after set-up ----------------------------------------------------------

int CFilterListCtrl::InsertCustomColumn(const sTarnColInfo& info) {
  const int column = engine_.AppendColumn(info);
  model_->ColumnAppended();
  const int position = engine_.ColumnPosition(column);
  if (position >= 0 && info.nWidth > 0)
    header_->resizeSection(position, info.nWidth);
  columnEdit_->Sync();
  return column;
}

// A model reset keeps the header's visual order. The engine's header items
// already stand in the order the user sees, so a section left where it was
// dragged would show its neighbour's column in its place.
void CFilterListCtrl::ColumnsReset() {
  model_->ColumnsReset();
  restoringOrder_ = true;
  for (int v = 0; v < header_->count(); ++v)
    header_->moveSection(header_->visualIndex(v), v);
  restoringOrder_ = false;
}

bool CFilterListCtrl::DeleteHeaderColumn(int headerItem) {
  if (!engine_.DeleteHeaderColumn(headerItem))
    return false;
  // Marks move with the later items.
  for (int s = headerItem; s + 1 < header_->count(); ++s)
    header_->SetSectionImage(s, header_->SectionImage(s + 1));
  model_->ColumnRemoved(headerItem);
  engine_.Filter();
  columnEdit_->Sync();
  return true;
}

CustomColumnGrid* CFilterListCtrl::CustomColumns() {
  columnEdit_->Sync();
  return columnEdit_.get();
}

std::vector<std::string> CFilterListCtrl::ColumnNames() const {
  std::vector<std::string> names;
  for (int c = 0; c < engine_.ColumnCount(); ++c)
    names.emplace_back(engine_.ColumnInfo(c)->Name());
  return names;
}

const sTarnColInfo* CFilterListCtrl::FindColumnByName(const std::string& name) const {
  for (int c = 0; c < engine_.ColumnCount(); ++c)
    if (engine_.ColumnInfo(c)->Name() == name)
      return engine_.ColumnInfo(c);
  return nullptr;
}

QString CFilterListCtrl::GetCellText(int row, int headerItem) {
  return QString::fromStdString(engine_.GetItemText(model_->EngineRow(row), headerItem));
}

std::string CFilterListCtrl::GetCellBytes(int row, int headerItem) {
  return engine_.GetItemText(model_->EngineRow(row), headerItem);
}

// --- filter bar ------------------------------------------------------------------------

void CFilterListCtrl::ToggleFilterBar() {
  const bool show = !header_->FilterBarVisible();
  if (show)
    header_->SetChangeDelay(kFilterDelayMs);
  header_->SetFilterBarVisible(show);
  updateGeometries();
  if (show && header_->count() > 0)
    header_->EditFilter(0);
  viewport()->update();
}

bool CFilterListCtrl::FilterBarShown() const {
  return header_->FilterBarVisible();
}

void CFilterListCtrl::ScrollFieldIntoView(int headerItem) {
  QScrollBar* bar = horizontalScrollBar();
  const int left = header_->sectionPosition(headerItem);
  const int right = left + header_->sectionSize(headerItem);
  const int width = viewport()->width();
  if (left < bar->value())
    bar->setValue(left);
  else if (right > bar->value() + width)
    bar->setValue(std::min(left, right - width));
}

void CFilterListCtrl::OnHeaderFilterText(int headerItem, std::string_view text) {
  header_->SetFilterText(headerItem, QString::fromUtf8(text.data(), qsizetype(text.size())));
}

void CFilterListCtrl::OnClearHeaderFilters() {
  header_->ClearFilterTexts();
}

// --- distinct values ---------------------------------------------------------------------

CFilterText* CFilterListCtrl::SharedFilterPopup() {
  return Shared().popup.data();
}

void CFilterListCtrl::DestroySharedWindows() {
  delete Shared().popup.data();
  Shared().editor.reset();
}

void CFilterListCtrl::PopupDistinctValues(int headerItem, const QPoint& globalPos) {
  const int column = engine_.DataColumnAt(headerItem);
  if (column < 0)
    return;
  auto& shared = Shared();
  if (!shared.popup)
    shared.popup = new CFilterText();
  QObject::disconnect(shared.applied);
  CFilterText* popup = shared.popup.data();
  shared.applied =
      connect(popup, &CFilterText::Applied, this, [this](int item, const QString& text) {
        const int c = engine_.DataColumnAt(item);
        if (c >= 0)
          engine_.SetFilter(c, text.toStdString(), false);
      });
  popup->Popup(engine_.DistinctValues(column), headerItem, globalPos);
}

void CFilterListCtrl::FillComboWithColumn(QComboBox* combo, int column) {
  if (!combo)
    return;
  combo->clear();
  for (const std::string& value : engine_.ComboValues(column))
    combo->addItem(QString::fromStdString(value));
  combo->setCurrentIndex(0);
}

// --- sorting, marks ---------------------------------------------------------------------

void CFilterListCtrl::SetHeaderImage(int headerItem, int image) {
  header_->SetSectionImage(headerItem, image);
}

void CFilterListCtrl::OnSortMark(int clearColumn, int column, int image) {
  if (clearColumn >= 0)
    header_->SetSectionImage(clearColumn, -1);
  header_->SetSectionImage(column, image);
}

void CFilterListCtrl::OnRowDeleted(int position) {
  // The row after a deleted selected row takes its place in the selection.
  if (deletedWasSelected_ && position < model_->rowCount())
    selectionModel()->select(model_->index(position, 0),
                             QItemSelectionModel::Select | QItemSelectionModel::Rows);
  deletedWasSelected_ = false;
  if (engine_.ReverseDisplay() && !hasFocus())
    scrollToTop();
}

// --- menu and commands ----------------------------------------------------------------

void CFilterListCtrl::AddMenuItems(QMenu& menu, bool header) {
  if (header)
    return;
  menu.addSeparator();
  menu.addAction(QStringLiteral("Reset Filters"))->setData(kCmdResetFilters);
  QAction* exact = menu.addAction(QStringLiteral("Exact Match"));
  exact->setData(kCmdExactMatch);
  exact->setCheckable(true);
  exact->setChecked(engine_.ExactMatchMode());
  if (customColumns_ && engine_.HasDataSource()) {
    menu.addSeparator();
    menu.addAction(QStringLiteral("Add Custom Columns"))->setData(kCmdAddCustomColumns);
    menu.addAction(QStringLiteral("Edit Custom Columns"))->setData(kCmdEditCustomColumns);
    menu.addAction(QStringLiteral("Delete Custom Columns"))->setData(kCmdDeleteCustomColumns);
  }
  menu.addSeparator();
  const auto fitItems = MakeHeaderMenu();
  for (QAction* action : fitItems->actions())
    menu.addAction(action->text())->setData(action->data());
}

bool CFilterListCtrl::OnCommand(int id) {
  switch (id) {
  case kCmdResetFilters:
    engine_.ResetFilters();
    return true;
  case kCmdExactMatch:
    engine_.ToggleExactMatch();
    return true;
  case kCmdAddCustomColumns:
  case kCmdEditCustomColumns:
  case kCmdDeleteCustomColumns: {
    const int mode = id == kCmdAddCustomColumns ? 0 : id == kCmdEditCustomColumns ? 1 : 2;
    OpenDialog(Shared().editorFactory, Shared().editor, nullptr, mode);
    return true;
  }
  default:
    return CCommonListCtrl::OnCommand(id);
  }
}

void CFilterListCtrl::SetCustomColumnEditorFactory(GridDialogFactory factory) {
  Shared().editorFactory = std::move(factory);
}

void CFilterListCtrl::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F && (event->modifiers() & Qt::ControlModifier)) {
    ToggleFilterBar();
    return;
  }
  CCommonListCtrl::keyPressEvent(event);
}

} // namespace vh

namespace vh {

QRect CFilterListCtrl::CheckBoxRect(const QRect& cell) {
  const int side = std::min(cell.height() - 2, kCheckBoxSide);
  return QRect(cell.left() + 2, cell.top() + (cell.height() - side) / 2, side, side);
}

void CFilterListCtrl::paintEvent(QPaintEvent* event) {
  ++paintCount_;
  CCommonListCtrl::paintEvent(event);
}

void CFilterListCtrl::mousePressEvent(QMouseEvent* event) {
  const QModelIndex index = indexAt(event->position().toPoint());
  if (checkBoxes_ && index.isValid() && index.column() == 0 && event->button() == Qt::LeftButton &&
      CheckBoxRect(visualRect(index)).contains(event->position().toPoint())) {
    const int row = model_->EngineRow(index.row());
    engine_.SetCheck(row, engine_.GetCheck(row) ? 0 : 1);
    selectionModel()->setCurrentIndex(index, QItemSelectionModel::ClearAndSelect |
                                                 QItemSelectionModel::Rows);
    setFocus(Qt::MouseFocusReason);
    viewport()->update(visualRect(index));
    return;
  }
  CCommonListCtrl::mousePressEvent(event);
}

} // namespace vh
