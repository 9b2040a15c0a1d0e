#include <QApplication>

#include <gtest/gtest.h>

#include "grid/widgets/filter_list_ctrl.h"
#include "plugin/header_images.h"

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  vh::CCommonListCtrl::SetHeaderImageList(vh::MakeHeaderImageList());
  ::testing::InitGoogleTest(&argc, argv);
  const int result = RUN_ALL_TESTS();
  vh::CFilterListCtrl::DestroySharedWindows();
  vh::CCommonListCtrl::DestroySharedDialogs();
  return result;
}
