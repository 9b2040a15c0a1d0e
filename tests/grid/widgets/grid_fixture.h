// A filled grid for the widget tests: rows of texts served through the
// owner data source (item data = row number + 1), in its own settings
// directory, with messages recorded.
#pragma once

#include "common/message.h"
#include "grid/widgets/filter_list_ctrl.h"
#include "grid/widgets/filter_list_model.h"
#include "settings/settings_paths.h"
#include "tests/settings/temp_dir.h"
#include "widgets/filter_header.h"

#include <QApplication>
#include <QDialog>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QTest>
#include <QVBoxLayout>

#include <memory>
#include <string>
#include <vector>

namespace vh::test {

using Texts = std::vector<std::string>;

struct GridRows {
  std::vector<Texts> rows;
  int fetches = 0;
  int image = -1; // the image output of every cell
  static int Fetch(void* owner, uint64_t item, int column, std::string& text, CellStyle& style) {
    auto* self = static_cast<GridRows*>(owner);
    ++self->fetches;
    if (item == 0 || item > self->rows.size() || column < 0 ||
        size_t(column) >= self->rows[item - 1].size())
      return 0;
    text = self->rows[item - 1][size_t(column)];
    style.image = self->image;
    return 1;
  }
};

// Client, Symbol, Qty (integer), Close (decimal).
inline std::vector<sTarnColInfo> HoldingColumns() {
  const char* names[] = {"Client", "Symbol", "Qty", "Close"};
  const int types[] = {kCompareText, kCompareText, kCompareInteger, kCompareDecimal};
  std::vector<sTarnColInfo> columns(4);
  for (size_t c = 0; c < 4; ++c) {
    columns[c].SetName(names[c]);
    columns[c].nType = types[c];
    columns[c].nFormat = c < 2 ? kFormatLeft : kFormatRight;
    columns[c].nWidth = 90;
  }
  return columns;
}

inline std::vector<Texts> SampleRows() {
  return {{"C001", "INFY", "120", "1510.25"},
          {"C002", "TCS", "15", "3320.5"},
          {"C003", "INFY", "300", "1512"},
          {"C004", "ABB", "7", "n/a"},
          {"C005", "SBIN", "2000", "601.4"}};
}

class GridTest : public ::testing::Test {
protected:
  // A grid of `columns_` inside a dialog, as the view holds it.
  CFilterListCtrl& MakeGrid(bool customizable = false) {
    // A default export lands in this test's own folder.
    qputenv("HOME", QByteArray::fromStdString(dir_.path().string()));
    grid_ = nullptr;
    dialog_ = std::make_unique<QDialog>();
    grid_ = new CFilterListCtrl(dialog_.get());
    (new QVBoxLayout(dialog_.get()))->addWidget(grid_);
    grid_->SetProfileName("testgrid");
    grid_->SetListControlId(9016);
    grid_->SetCustomizable(customizable);
    grid_->Engine().SetOwnerDataSource(&GridRows::Fetch, &data_);
    grid_->SetUpColumns(columns_);
    dialog_->resize(480, 300);
    return *grid_;
  }
  // Shows the dialog as the active window, so focus moves as for a user.
  void Show() {
    dialog_->show();
    dialog_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
  }
  void AddRows(const std::vector<Texts>& rows) {
    for (const auto& r : rows) {
      data_.rows.push_back(r);
      grid_->SetItemData(grid_->InsertItem(0), data_.rows.size());
    }
    grid_->Model().Flush();
  }
  // The first column of every row of `model`, top to bottom.
  static Texts Items(const QAbstractItemModel* model) {
    Texts out;
    for (int r = 0; r < model->rowCount(); ++r)
      out.push_back(model->index(r, 0).data().toString().toStdString());
    return out;
  }
  // Column `column` of every displayed row, top to bottom.
  Texts Shown(int column) {
    Texts out;
    for (int r = 0; r < grid_->Model().rowCount(); ++r)
      out.push_back(grid_->GetCellText(r, column).toStdString());
    return out;
  }
  // The menu a right click opens on `target`: each item's text, marked
  // " [x]" when checked and " [grey]" when greyed. The item called
  // `choose`, if any, is triggered.
  Texts MenuAt(QWidget* target, const char* choose = nullptr) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                            target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &event);
    Texts texts;
    QMenu* menu = grid_->OpenMenu();
    for (QAction* a : menu ? menu->actions() : QList<QAction*>()) {
      if (choose && a->text() == choose)
        a->trigger();
      if (!a->isSeparator())
        texts.push_back(a->text().toStdString() + (a->isChecked() ? " [x]" : "") +
                        (a->isEnabled() ? "" : " [grey]"));
    }
    if (grid_->OpenMenu())
      grid_->OpenMenu()->close();
    return texts;
  }

  void ClickSection(int section) {
    QHeaderView* h = grid_->horizontalHeader();
    const QPoint p(h->sectionViewportPosition(section) + h->sectionSize(section) / 2, 5);
    QTest::mouseClick(h->viewport(), Qt::LeftButton, {}, p);
  }

  TempDir dir_;
  ScopedSettingsPaths paths_{{dir_.path().string(), dir_.path().string()}};
  ScopedMessageRecorder messages_;
  GridRows data_;
  std::vector<sTarnColInfo> columns_ = HoldingColumns();
  std::unique_ptr<QDialog> dialog_;
  CFilterListCtrl* grid_ = nullptr;
};

} // namespace vh::test
