// A horizontal header with a filter bar under its labels: one line edit and
// one filter button per section. A field reports what the user typed after
// a change delay (500 ms in the grids); texts written by the program
// (SetFilterText, ClearFilterTexts) are never reported back, so a grid that
// echoes its own filter state cannot filter twice.
//
// Keys inside a field: Tab / Shift+Tab move to the next / previous field
// (wrapping), Enter reports at once, Ctrl+F asks the owner to toggle the
// bar; every other key is the field's own (a capital E types an E).
#pragma once

#include <QHeaderView>
#include <QList>
#include <QPixmap>
#include <QPointer>

#include <vector>

class QLineEdit;
class QTimer;
class QToolButton;

namespace vh {

class CFilterHeader : public QHeaderView {
  Q_OBJECT
public:
  explicit CFilterHeader(QWidget* parent = nullptr);
  ~CFilterHeader() override;

  void SetFilterBarVisible(bool visible);
  bool FilterBarVisible() const { return barVisible_; }
  void SetChangeDelay(int milliseconds);
  int ChangeDelay() const;

  // Shows `text` in the field of `section` without reporting it; a pending
  // report of that field is dropped. Unknown sections are ignored.
  void SetFilterText(int section, const QString& text);
  // Empty when there is no such field.
  QString FilterText(int section) const;
  void ClearFilterTexts();
  // Starts editing the field of `section` (focus, text selected) and asks
  // for it to be scrolled into view (FieldFocused). False for an unknown
  // section or a hidden bar.
  bool EditFilter(int section);
  // The section whose field was edited last, -1 before any.
  int CurrentFilterColumn() const { return current_; }
  // The controls of one section, null when there is none.
  QLineEdit* FilterField(int section) const;
  QToolButton* FilterButton(int section) const;
  // True when the focus is inside one of the fields.
  bool FieldHasFocus() const;

  // Header marks: `image` indexes the list given to SetImages, -1 none;
  // drawn right of the label.
  void SetImages(QList<QPixmap> images);
  void SetSectionImage(int section, int image);
  int SectionImage(int section) const;

  // Lays the fields out again (after a horizontal scroll of the view).
  void PlaceFields();

  QSize sizeHint() const override;

signals:
  void FilterChanged(int section, const QString& text);
  void FilterButtonClicked(int section, const QPoint& globalPos);
  void ToggleRequested();
  void FieldFocused(int section);

protected:
  void updateGeometries() override;
  void paintEvent(QPaintEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

private:
  struct Field {
    QLineEdit* edit = nullptr;
    QToolButton* button = nullptr;
  };
  void SyncFields();
  void ReportPending();
  int FieldHeight() const;
  int SectionOf(const QObject* control) const;

  std::vector<Field> fields_;
  QTimer* timer_;
  int pendingSection_ = -1;
  int current_ = -1;
  bool barVisible_ = false;
  QList<QPixmap> images_;
  std::vector<int> sectionImages_;
};

} // namespace vh
