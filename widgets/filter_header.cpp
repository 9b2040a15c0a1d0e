#include "widgets/filter_header.h"

#include <QCursor>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPainter>
#include <QTimer>
#include <QToolButton>

namespace vh {
namespace {

constexpr int kMarkMargin = 4;

} // namespace

CFilterHeader::CFilterHeader(QWidget* parent)
    : QHeaderView(Qt::Horizontal, parent), timer_(new QTimer(this)) {
  timer_->setSingleShot(true);
  connect(timer_, &QTimer::timeout, this, &CFilterHeader::ReportPending);
  connect(this, &QHeaderView::sectionCountChanged, this, [this] { SyncFields(); });
  connect(this, &QHeaderView::sectionResized, this, [this] { PlaceFields(); });
  connect(this, &QHeaderView::sectionMoved, this, [this] { PlaceFields(); });
}

CFilterHeader::~CFilterHeader() = default;

void CFilterHeader::SetChangeDelay(int milliseconds) {
  timer_->setInterval(milliseconds);
}

int CFilterHeader::ChangeDelay() const {
  return timer_->interval();
}

int CFilterHeader::FieldHeight() const {
  return barVisible_ ? QLineEdit().sizeHint().height() : 0;
}

QSize CFilterHeader::sizeHint() const {
  QSize size = QHeaderView::sizeHint();
  size.rheight() += FieldHeight();
  return size;
}

void CFilterHeader::SetFilterBarVisible(bool visible) {
  if (visible == barVisible_)
    return;
  if (!visible)
    ReportPending();
  barVisible_ = visible;
  setViewportMargins(0, 0, 0, FieldHeight());
  SyncFields();
  updateGeometry();
  if (auto* view = parentWidget())
    QMetaObject::invokeMethod(view, "updateGeometries");
}

// --- fields -------------------------------------------------------------------

void CFilterHeader::SyncFields() {
  const int n = count();
  while (int(fields_.size()) > n) {
    delete fields_.back().edit;
    delete fields_.back().button;
    fields_.pop_back();
  }
  while (int(fields_.size()) < n) {
    Field f;
    f.edit = new QLineEdit(this);
    f.edit->installEventFilter(this);
    f.button = new QToolButton(this);
    f.button->setArrowType(Qt::DownArrow);
    f.button->setFocusPolicy(Qt::NoFocus);
    connect(f.edit, &QLineEdit::textEdited, this, [this, edit = f.edit] {
      const int section = SectionOf(edit);
      if (pendingSection_ >= 0 && pendingSection_ != section)
        ReportPending();
      pendingSection_ = section;
      current_ = section;
      timer_->start();
    });
    connect(f.button, &QToolButton::clicked, this, [this, button = f.button] {
      emit FilterButtonClicked(SectionOf(button), QCursor::pos());
    });
    fields_.push_back(f);
  }
  if (int(sectionImages_.size()) != n)
    sectionImages_.resize(size_t(n), -1);
  PlaceFields();
}

int CFilterHeader::SectionOf(const QObject* control) const {
  for (size_t i = 0; i < fields_.size(); ++i)
    if (fields_[i].edit == control || fields_[i].button == control)
      return int(i);
  return -1;
}

void CFilterHeader::PlaceFields() {
  const int h = FieldHeight();
  const int y = height() - h;
  for (size_t i = 0; i < fields_.size(); ++i) {
    const int section = int(i);
    const bool shown = barVisible_ && !isSectionHidden(section);
    fields_[i].edit->setVisible(shown);
    fields_[i].button->setVisible(shown);
    if (!shown)
      continue;
    const int x = sectionViewportPosition(section);
    const int w = sectionSize(section);
    const int buttonWidth = std::min(h, w / 2);
    fields_[i].edit->setGeometry(x, y, w - buttonWidth, h);
    fields_[i].button->setGeometry(x + w - buttonWidth, y, buttonWidth, h);
  }
}

void CFilterHeader::updateGeometries() {
  QHeaderView::updateGeometries();
  PlaceFields();
}

void CFilterHeader::resizeEvent(QResizeEvent* event) {
  QHeaderView::resizeEvent(event);
  PlaceFields();
}

QLineEdit* CFilterHeader::FilterField(int section) const {
  return section >= 0 && size_t(section) < fields_.size() ? fields_[size_t(section)].edit : nullptr;
}

QToolButton* CFilterHeader::FilterButton(int section) const {
  return section >= 0 && size_t(section) < fields_.size() ? fields_[size_t(section)].button
                                                          : nullptr;
}

bool CFilterHeader::FieldHasFocus() const {
  for (const Field& f : fields_)
    if (f.edit->hasFocus())
      return true;
  return false;
}

void CFilterHeader::SetFilterText(int section, const QString& text) {
  QLineEdit* edit = FilterField(section);
  if (!edit)
    return;
  if (pendingSection_ == section) {
    timer_->stop();
    pendingSection_ = -1;
  }
  edit->setText(text); // setText never emits textEdited, so nothing reports
}

QString CFilterHeader::FilterText(int section) const {
  const QLineEdit* edit = FilterField(section);
  return edit ? edit->text() : QString();
}

void CFilterHeader::ClearFilterTexts() {
  timer_->stop();
  pendingSection_ = -1;
  for (const Field& f : fields_)
    f.edit->clear();
}

void CFilterHeader::ReportPending() {
  timer_->stop();
  const int section = pendingSection_;
  pendingSection_ = -1;
  if (section >= 0 && size_t(section) < fields_.size())
    emit FilterChanged(section, fields_[size_t(section)].edit->text());
}

bool CFilterHeader::EditFilter(int section) {
  QLineEdit* edit = FilterField(section);
  if (!edit || !barVisible_)
    return false;
  current_ = section;
  emit FieldFocused(section);
  PlaceFields();
  edit->setFocus(Qt::OtherFocusReason);
  edit->selectAll();
  return true;
}

bool CFilterHeader::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() != QEvent::KeyPress)
    return QHeaderView::eventFilter(watched, event);
  const int section = SectionOf(watched);
  if (section < 0)
    return QHeaderView::eventFilter(watched, event);
  auto* key = static_cast<QKeyEvent*>(event);
  const int n = int(fields_.size());
  switch (key->key()) {
  case Qt::Key_Tab:
    if (!(key->modifiers() & Qt::ShiftModifier)) {
      EditFilter((section + 1) % n);
      return true;
    }
    [[fallthrough]];
  case Qt::Key_Backtab:
    EditFilter((section + n - 1) % n);
    return true;
  case Qt::Key_Return:
  case Qt::Key_Enter:
    if (pendingSection_ == section)
      ReportPending();
    return true;
  case Qt::Key_F:
    if (key->modifiers() & Qt::ControlModifier) {
      emit ToggleRequested();
      return true;
    }
    break;
  default:
    break;
  }
  return QHeaderView::eventFilter(watched, event);
}

// --- marks ------------------------------------------------------------------------

void CFilterHeader::SetImages(QList<QPixmap> images) {
  images_ = std::move(images);
  viewport()->update();
}

void CFilterHeader::SetSectionImage(int section, int image) {
  if (section < 0)
    return;
  if (size_t(section) >= sectionImages_.size())
    sectionImages_.resize(size_t(section) + 1, -1);
  sectionImages_[size_t(section)] = image;
  viewport()->update();
}

int CFilterHeader::SectionImage(int section) const {
  return section >= 0 && size_t(section) < sectionImages_.size() ? sectionImages_[size_t(section)]
                                                                 : -1;
}

// The marks go over the painted sections, right of the label, so the style
// never has to make room for them.
void CFilterHeader::paintEvent(QPaintEvent* event) {
  QHeaderView::paintEvent(event);
  QPainter painter(viewport());
  for (int section = 0; section < count(); ++section) {
    const int image = SectionImage(section);
    if (image < 0 || image >= images_.size() || isSectionHidden(section))
      continue;
    const QPixmap& mark = images_[image];
    const int right = sectionViewportPosition(section) + sectionSize(section);
    const int x = right - kMarkMargin - mark.width();
    const int y = (viewport()->height() - mark.height()) / 2;
    if (x > sectionViewportPosition(section))
      painter.drawPixmap(x, y, mark);
  }
}

} // namespace vh
