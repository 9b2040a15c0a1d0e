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

struct GridRows {
  std::vector<std::vector<std::string>> rows;
  int fetches = 0;
  static int Fetch(void* owner, uint64_t item, int column, std::string& text, CellStyle&) {
    auto* self = static_cast<GridRows*>(owner);
    ++self->fetches;
    if (item == 0 || item > self->rows.size() || column < 0 ||
        size_t(column) >= self->rows[item - 1].size())
      return 0;
    text = self->rows[item - 1][size_t(column)];
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

inline std::vector<std::vector<std::string>> SampleRows() {
  return {{"C001", "INFY", "120", "1510.25"},
          {"C002", "TCS", "15", "3320.5"},
          {"C003", "INFY", "300", "1512"},
          {"C004", "ABB", "7", "n/a"},
          {"C005", "SBIN", "2000", "601.4"}};
}

class GridTest : public ::testing::Test {
protected:
  // A grid inside a dialog, as the view holds it (or inside a plain window).
  CFilterListCtrl& MakeGrid(bool customizable = false, bool inDialog = true) {
    // A default export lands in this test's own folder.
    qputenv("HOME", QByteArray::fromStdString(dir_.path().string()));
    qputenv("XDG_CONFIG_HOME", QByteArray::fromStdString(dir_.path().string()));
    dialog_ = std::make_unique<QDialog>();
    QWidget* holder = dialog_.get();
    if (!inDialog) {
      window_ = std::make_unique<QWidget>();
      holder = window_.get();
    }
    grid_ = new CFilterListCtrl(holder);
    auto* layout = new QVBoxLayout(holder);
    layout->addWidget(grid_);
    grid_->SetProfileName("testgrid");
    grid_->SetListControlId(9016);
    grid_->SetCustomizable(customizable);
    grid_->Engine().SetOwnerDataSource(&GridRows::Fetch, &data_);
    grid_->SetUpColumns(HoldingColumns());
    dialog_->resize(480, 300);
    return *grid_;
  }
  // Shows the dialog as the active window, so focus moves as for a user.
  void Show() {
    dialog_->show();
    dialog_->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(dialog_.get()));
  }
  void AddRows(const std::vector<std::vector<std::string>>& rows) {
    for (const auto& r : rows) {
      data_.rows.push_back(r);
      const int at = grid_->InsertItem(0);
      grid_->SetItemData(at, data_.rows.size());
    }
    grid_->Model().Flush();
  }
  // Column `column` of every displayed row, top to bottom.
  std::vector<std::string> Shown(int column) {
    std::vector<std::string> out;
    for (int r = 0; r < grid_->Model().rowCount(); ++r)
      out.push_back(grid_->GetCellText(r, column).toStdString());
    return out;
  }
  // The menu a right click opens on the rows or on the header.
  std::vector<std::string> MenuAt(QWidget* target, std::vector<bool>* enabled = nullptr) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, QPoint(5, 5),
                            target->mapToGlobal(QPoint(5, 5)));
    QApplication::sendEvent(target, &event);
    std::vector<std::string> texts;
    QMenu* menu = grid_->OpenMenu();
    if (!menu)
      return texts;
    for (QAction* a : menu->actions()) {
      if (a->isSeparator())
        continue;
      texts.push_back(a->text().toStdString() + (a->isChecked() ? " [x]" : ""));
      if (enabled)
        enabled->push_back(a->isEnabled());
    }
    menu->close();
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
  std::unique_ptr<QWidget> window_;
  std::unique_ptr<QDialog> dialog_;
  CFilterListCtrl* grid_ = nullptr;
};

} // namespace vh::test
