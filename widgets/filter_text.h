// The distinct-value pop-up of a grid column's filter button (dialog 1010):
// a captionless window with the column's values, from which the user picks
// some to filter on.
//
// The list (control 1032) is a QListView over a model of the values, so a
// million values cost one vector, not a million items; it is sorted as
// widgets/sorted_values.h says, allows extended multiple selection (Shift
// and Ctrl clicks), and starts with nothing selected. A hidden "cancel"
// button (control 2) closes the pop-up; Escape presses it.
//
// Applying: a double click on a value, or Enter (either key), takes the
// selected values in list order, joins them as the filter text with "~"
// (JoinFilterTexts, grid/filter_join.h: a value already contained in the
// text joined so far is left out), hides the pop-up and emits Applied.
// Enter with nothing selected applies the empty text, which clears the
// column's filter.
//
// Closing: the pop-up cancels (hides, emits nothing) when it loses
// activation, e.g. on a click in any other window.
#pragma once

#include <QPoint>
#include <QString>
#include <QWidget>

#include <string>
#include <vector>

class QListView;
class QPushButton;

namespace vh {

class DistinctValueModel;

inline constexpr int kFilterTextDialogId = 1010;
inline constexpr int kFilterTextListId = 1032;
inline constexpr int kFilterTextCancelId = 2;

class CFilterText : public QWidget {
  Q_OBJECT
public:
  explicit CFilterText(QWidget* parent = nullptr);
  ~CFilterText() override;

  // Fills the list with `values` (sorted here, each shown once, empty texts
  // left out) and shows the pop-up with its top left corner at `globalPos`
  // (moved inward where it would leave the screen), in front and active.
  // Records `column`. Any earlier list and selection are replaced.
  void Popup(std::vector<std::string> values, int column, QPoint globalPos);
  // The column of the last Popup; -1 before the first.
  int Column() const { return column_; }

signals:
  // Double click or Enter: the selected texts, in list order, joined by the
  // filter join rule. The pop-up has hidden when this is emitted.
  void Applied(int column, const QString& filterText);

protected:
  bool event(QEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  bool eventFilter(QObject* watched, QEvent* event) override;

private:
  void Apply();
  void Cancel();

  DistinctValueModel* model_;
  QListView* list_;
  QPushButton* cancel_;
  int column_ = -1;
};

} // namespace vh
