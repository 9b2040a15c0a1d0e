// The column profile dialog (resource 9002, " Column Profile"): hidden and
// shown columns in two drag lists, the buttons that apply and save them,
// and the default sort. vh::ColumnReposition decides; this shows.
//
// Sort mode (the grid's command 4005) opens it with the default-sort edit
// focused and "Sort" as the default button; "&Save" is disabled there.
// Otherwise the shown list has the focus and "&View" is the default button.
// "&View" keeps the dialog open; "&Save" closes it.
#pragma once

#include "grid/column_reposition.h"

#include <QDialog>

class QLabel;
class QLineEdit;
class QPushButton;

namespace vh {
class CNTDragListCtrl;
}

class CRepositionColumns : public QDialog {
  Q_OBJECT

public:
  static constexpr int kDialogId = 9002;
  static constexpr int kViewId = 10001;
  static constexpr int kShowId = 10003; // ">"
  static constexpr int kHideId = 10004; // "<"
  static constexpr int kSaveId = 10005;
  static constexpr int kDefaultId = 10006;
  static constexpr int kShownListId = 10007;
  static constexpr int kHiddenListId = 10008;
  static constexpr int kSortLabelId = 10009;
  static constexpr int kSortId = 10010;
  static constexpr int kSortEditId = 10012;
  static constexpr int kCancelId = 2;

  explicit CRepositionColumns(QWidget* parent = nullptr);

  // Fills the lists from `grid` and shows the dialog in front.
  void Open(vh::CustomColumnGrid& grid, bool sortMode);

private:
  void BuildControls();
  void LayOut();
  void ConnectControls();
  QPushButton* AddButton(const char* text, int id);
  std::vector<int> ShownColumns() const;

  vh::ColumnReposition core_;
  vh::CNTDragListCtrl* shown_ = nullptr;
  vh::CNTDragListCtrl* hidden_ = nullptr;
  QPushButton* show_ = nullptr;
  QPushButton* hide_ = nullptr;
  QLabel* sortLabel_ = nullptr;
  QLineEdit* sortText_ = nullptr;
  QPushButton* sort_ = nullptr;
  QPushButton* view_ = nullptr;
  QPushButton* save_ = nullptr;
  QPushButton* default_ = nullptr;
  QPushButton* cancel_ = nullptr;
};
