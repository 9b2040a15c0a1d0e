#include "grid/widgets/common_list_ctrl.h"

#include "grid/widgets/grid_commands.h"
#include "plugin/tarn_host_api.h"
#include "settings/list_appearance.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDialog>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QKeyEvent>
#include <QMenu>
#include <QPainter>
#include <QScreen>

#include <algorithm>

namespace vh {
namespace {

constexpr uint32_t kStartText = 0x00FF00;
constexpr uint32_t kStartBackground = 0x000000;
constexpr int kRegistryBlock = 10;
constexpr int kLargestFontPixels = 400;

QColor FromColourRef(uint32_t c) {
  return QColor(int(c & 0xFF), int((c >> 8) & 0xFF), int((c >> 16) & 0xFF));
}

struct ClassWide {
  HeaderImageList images;
  std::vector<CCommonListCtrl*> registry;
  GridDialogFactory appearanceFactory;
  GridDialogFactory profileFactory;
  std::unique_ptr<GridDialog> appearance;
};

ClassWide& Shared() {
  static ClassWide shared;
  return shared;
}

} // namespace

CCommonListCtrl::CCommonListCtrl(QWidget* parent) : QTableView(parent) {
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setSelectionMode(QAbstractItemView::ExtendedSelection);
  setShowGrid(false);
  setWordWrap(false);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  verticalHeader()->hide();
  // Uniform rows: the view never measures a million rows one by one.
  verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);
  horizontalHeader()->setSectionsMovable(true);
  horizontalHeader()->setHighlightSections(false);
  horizontalHeader()->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(horizontalHeader(), &QWidget::customContextMenuRequested, this, [this](const QPoint& p) {
    ShowMenu(MakeHeaderMenu(), horizontalHeader()->mapToGlobal(p));
  });
  ApplyRowHeight();
}

CCommonListCtrl::~CCommonListCtrl() {
  auto& registry = Shared().registry;
  registry.erase(std::remove(registry.begin(), registry.end(), this), registry.end());
  if (Shared().appearance)
    Shared().appearance->GridDestroyed(this);
  profileDialog_.reset();
}

void CCommonListCtrl::SetListControlId(int id) {
  controlId_ = id;
  SetControlId(this, id);
}

// The header never shows selected sections, yet Qt asks on each header
// paint whether the columns next to each section are wholly selected, which
// walks every selected row: with a million rows selected one header paint
// froze the window for a quarter of a second. The header gets a selection
// of its own that stays empty; rows are still selected whole (clicking a
// section never selects a column).
void CCommonListCtrl::setSelectionModel(QItemSelectionModel* selectionModel) {
  QTableView::setSelectionModel(selectionModel);
  if (selectionModel && selectionModel->model())
    horizontalHeader()->setSelectionModel(
        new QItemSelectionModel(selectionModel->model(), selectionModel));
}

void CCommonListCtrl::SetEmptyAreaPainting(bool on) {
  emptyAreaPainting_ = on;
  viewport()->update();
}

void CCommonListCtrl::paintEvent(QPaintEvent* event) {
  QTableView::paintEvent(event);
  const int band = verticalHeader()->defaultSectionSize();
  const int rows = model() ? model()->rowCount() : 0;
  if (!emptyAreaPainting_ || band <= 0)
    return;
  int top = 0;
  if (rows > 0)
    top = rowViewportPosition(rows - 1) + rowHeight(rows - 1);
  if (top >= viewport()->height())
    return;
  QPainter painter(viewport());
  for (int y = std::max(top, 0); y < viewport()->height(); y += band)
    FillEmptyRow(painter, QRect(0, y, viewport()->width(), band));
}

void CCommonListCtrl::FillEmptyRow(QPainter& painter, const QRect& band) {
  painter.fillRect(band, DefaultBackground());
}

// --- set-up and appearance ---------------------------------------------------

bool CCommonListCtrl::InDialog() const {
  for (QWidget* w = parentWidget(); w; w = w->parentWidget())
    if (qobject_cast<QDialog*>(w))
      return true;
  return false;
}

void CCommonListCtrl::SetUp() {
  SetHeaderImage(sortColumn_, 0);
  sortMarkerIndex_ = -1;
  QPalette p = palette();
  p.setColor(QPalette::Text, FromColourRef(kStartText));
  p.setColor(QPalette::Base, FromColourRef(kStartBackground));
  setPalette(p);
  sListAppearance appearance = DefaultListAppearance();
  if (customizable_ && InDialog())
    ownSettings_ = LoadListAppearance(profileName_, controlId_, appearance);
  ApplyAppearance(appearance);
}

void CCommonListCtrl::ApplyAppearance(const sListAppearance& appearance, bool own) {
  ownSettings_ = ownSettings_ || own;
  appearance_ = appearance;
  SetListFont(appearance.fontFace, appearance.fontSize);
  if (colouringAllowed_) {
    QPalette p = palette();
    p.setColor(QPalette::Base, FromColourRef(appearance.backgroundColour));
    p.setColor(QPalette::Text, FromColourRef(appearance.textColour));
    setPalette(p);
  }
  viewport()->update();
}

QColor CCommonListCtrl::DefaultTextColour() const {
  return palette().color(QPalette::Text);
}

QColor CCommonListCtrl::DefaultBackground() const {
  return palette().color(QPalette::Base);
}

void CCommonListCtrl::SetListFont(const std::string& face, const std::string& sizeText) {
  const QScreen* screen = this->screen() ? this->screen() : QGuiApplication::primaryScreen();
  const int dpi = screen ? int(screen->logicalDotsPerInchY()) : 96;
  const ListFont lf = MakeListFont(face, sizeText, dpi);
  if (lf.height >= 0 || lf.height < -kLargestFontPixels)
    return;
  QFont f = font();
  f.setFamily(QString::fromStdString(lf.face));
  f.setPixelSize(-lf.height);
  setFont(f);
}

void CCommonListCtrl::ApplyRowHeight() {
  const QFontMetrics fm(font());
  verticalHeader()->setMinimumSectionSize(1);
  verticalHeader()->setDefaultSectionSize(fm.height() + fm.leading() + 1);
}

void CCommonListCtrl::changeEvent(QEvent* event) {
  if (event->type() == QEvent::FontChange)
    ApplyRowHeight();
  QTableView::changeEvent(event);
}

// --- menus ----------------------------------------------------------------------

namespace {

QAction* AddItem(QMenu& menu, const char* text, int id, bool enabled = true) {
  QAction* action = menu.addAction(QString::fromLatin1(text));
  action->setData(id);
  action->setEnabled(enabled);
  return action;
}

} // namespace

std::unique_ptr<QMenu> CCommonListCtrl::MakeRowMenu() {
  auto menu = std::make_unique<QMenu>(this);
  AddItem(*menu, "Write to Excel\tShift+E", kCmdWriteToExcel, exportAllowed_);
  AddItem(*menu, "Read from Excel", kCmdReadFromExcel, importAllowed_);
  AddItem(*menu, "Draw Grid Lines\tShift+G", kCmdDrawGridLines);
  if (customizable_)
    AddItem(*menu, "Customize \t Ctrl+Shift+C", kCmdCustomize);
  AddItem(*menu, "Copy to Clip Board\tCtrl+C", kCmdCopyToClipboard);
  AddMenuItems(*menu, false);
  return menu;
}

std::unique_ptr<QMenu> CCommonListCtrl::MakeHeaderMenu() {
  auto menu = std::make_unique<QMenu>(this);
  if (repositionAllowed_) {
    AddItem(*menu, "Reposition Columns", kCmdRepositionColumns);
    AddItem(*menu, "Fit to Data", kCmdFitToData);
  } else {
    // Kept: the capital T when the grid cannot reposition columns.
    AddItem(*menu, "Fit To Data", kCmdFitToData);
  }
  AddItem(*menu, "Fit to Header Size", kCmdFitToHeader);
  AddItem(*menu, "Fit to Window", kCmdFitToWindow);
  AddMenuItems(*menu, true);
  return menu;
}

void CCommonListCtrl::AddMenuItems(QMenu& /*menu*/, bool /*header*/) {}

QMenu* CCommonListCtrl::OpenMenu() const {
  return openMenu_ && openMenu_->isVisible() ? openMenu_.data() : nullptr;
}

void CCommonListCtrl::ShowMenu(std::unique_ptr<QMenu> menu, const QPoint& globalPos) {
  QMenu* m = menu.release();
  m->setAttribute(Qt::WA_DeleteOnClose);
  connect(m, &QMenu::triggered, this, [this](QAction* a) { OnCommand(a->data().toInt()); });
  openMenu_ = m;
  m->popup(globalPos);
}

void CCommonListCtrl::contextMenuEvent(QContextMenuEvent* event) {
  const QPoint global = event->reason() == QContextMenuEvent::Keyboard
                            ? viewport()->mapToGlobal(QPoint(0, 0))
                            : event->globalPos();
  ShowMenu(MakeRowMenu(), global);
  event->accept();
}

bool CCommonListCtrl::OnCommand(int id) {
  switch (id) {
  case kCmdWriteToExcel:
    (void)ExportToExcel();
    return true;
  case kCmdReadFromExcel:
    return true; // present, and does nothing
  case kCmdDrawGridLines:
    ToggleGridLines();
    return true;
  case kCmdCustomize:
    OpenAppearanceDialog();
    return true;
  case kCmdCopyToClipboard:
    CopyToClipboard();
    return true;
  case kCmdFitToData:
  case kCmdFitToHeader:
  case kCmdFitToWindow:
    FitColumns(id);
    return true;
  case kCmdRepositionColumns:
    OpenColumnProfileDialog(false);
    return true;
  case kCmdColumnProfileSortMode:
    OpenColumnProfileDialog(true);
    return true;
  default:
    return false;
  }
}

// --- keys ----------------------------------------------------------------------

void CCommonListCtrl::keyPressEvent(QKeyEvent* event) {
  const auto mods = event->modifiers();
  const bool ctrl = mods & Qt::ControlModifier;
  const bool shift = mods & Qt::ShiftModifier;
  switch (event->key()) {
  case Qt::Key_A:
    if (ctrl) {
      selectAll();
      if (model() && model()->rowCount() > 0)
        selectionModel()->setCurrentIndex(model()->index(0, 0), QItemSelectionModel::NoUpdate);
      return;
    }
    break;
  case Qt::Key_C:
    if (ctrl) {
      CopyToClipboard();
      // Kept: Ctrl+Shift+C copies and opens the appearance dialog.
      if (shift && customizable_)
        OpenAppearanceDialog();
      return;
    }
    break;
  case Qt::Key_E:
    if (shift && !ctrl) {
      (void)ExportToExcel();
      return; // consumed
    }
    break;
  case Qt::Key_G:
    if (shift && !ctrl)
      ToggleGridLines(); // and the key goes on
    break;
  case Qt::Key_Menu: {
    QContextMenuEvent menuEvent(QContextMenuEvent::Keyboard, QPoint(0, 0), QPoint(0, 0));
    contextMenuEvent(&menuEvent);
    return;
  }
  default:
    break;
  }
  QTableView::keyPressEvent(event);
}

// --- dialogs ---------------------------------------------------------------------

void CCommonListCtrl::OpenDialog(const GridDialogFactory& factory,
                                 std::unique_ptr<GridDialog>& slot, QWidget* parent, int mode) {
  if (!slot || !slot->Window()) {
    if (!factory)
      return;
    slot = factory(parent);
    if (!slot)
      return;
  }
  slot->OpenFor(this, mode);
  if (QWidget* window = slot->Window()) {
    window->show();
    window->raise();
    window->activateWindow();
  }
}

void CCommonListCtrl::OpenAppearanceDialog() {
  auto& shared = Shared();
  OpenDialog(shared.appearanceFactory, shared.appearance, nullptr, 0);
  QWidget* window = shared.appearance ? shared.appearance->Window() : nullptr;
  if (!window)
    return;
  window->setWindowTitle(QString::fromStdString("Customize Appearance :" + profileName_));
  const QPoint centre = mapToGlobal(rect().center());
  window->move(centre - QPoint(window->width() / 2, window->height() / 2));
}

void CCommonListCtrl::OpenColumnProfileDialog(bool sortMode) {
  OpenDialog(Shared().profileFactory, profileDialog_, this, sortMode ? 1 : 0);
}

void CCommonListCtrl::SetAppearanceDialogFactory(GridDialogFactory factory) {
  Shared().appearanceFactory = std::move(factory);
}

void CCommonListCtrl::SetColumnProfileDialogFactory(GridDialogFactory factory) {
  Shared().profileFactory = std::move(factory);
}

void CCommonListCtrl::DestroySharedDialogs() {
  Shared().appearance.reset();
}

// --- class-wide ------------------------------------------------------------------

void CCommonListCtrl::SetHeaderImageList(HeaderImageList images) {
  Shared().images = std::move(images);
}

const HeaderImageList& CCommonListCtrl::HeaderImages() {
  return Shared().images;
}

void CCommonListCtrl::AddToRegistry() {
  auto& registry = Shared().registry;
  if (std::find(registry.begin(), registry.end(), this) != registry.end())
    return;
  if (registry.size() == registry.capacity())
    registry.reserve(registry.size() + kRegistryBlock);
  registry.push_back(this);
}

const std::vector<CCommonListCtrl*>& CCommonListCtrl::Registry() {
  return Shared().registry;
}

void CCommonListCtrl::ClearRegistry() {
  Shared().registry.clear();
}

// --- what the grid shows -----------------------------------------------------------

int CCommonListCtrl::HeaderItemCount() const {
  return model() ? model()->columnCount() : 0;
}

QString CCommonListCtrl::HeaderItemText(int headerItem) const {
  return model() ? model()->headerData(headerItem, Qt::Horizontal).toString() : QString();
}

int CCommonListCtrl::DisplayedRowCount() const {
  return model() ? model()->rowCount() : 0;
}

QString CCommonListCtrl::GetCellText(int row, int headerItem) {
  return model() ? model()->index(row, headerItem).data().toString() : QString();
}

std::string CCommonListCtrl::GetCellBytes(int row, int headerItem) {
  return GetCellText(row, headerItem).toStdString();
}

std::vector<std::string> CCommonListCtrl::ColumnNames() const {
  std::vector<std::string> names;
  for (int i = 0; i < HeaderItemCount(); ++i)
    names.push_back(HeaderItemText(i).toStdString());
  return names;
}

const sTarnColInfo* CCommonListCtrl::FindColumnByName(const std::string& /*name*/) const {
  return nullptr;
}

void CCommonListCtrl::SetHeaderImage(int /*headerItem*/, int /*image*/) {}

int CCommonListCtrl::GetTopIndex() const {
  return DisplayedRowCount() > 0 ? std::max(0, rowAt(0)) : -1;
}

int CCommonListCtrl::GetCountPerPage() const {
  const int h = verticalHeader()->defaultSectionSize();
  return h > 0 ? viewport()->height() / h : 0;
}

void CCommonListCtrl::RedrawItem(int row) {
  const int y = rowViewportPosition(row);
  if (y >= 0 || y + rowHeight(row) > 0)
    viewport()->update(0, y, viewport()->width(), rowHeight(row));
}

} // namespace vh
