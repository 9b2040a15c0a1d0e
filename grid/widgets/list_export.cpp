// Spreadsheet export of a whole grid. The file and its default name are the
// exporter's (the user's documents folder, the grid's profile name and a
// time stamp); a caller may choose the path instead.
#include "grid/widgets/common_list_ctrl.h"

#include "common/message.h"
#include "excel/excel_interface.h"
#include "grid/widgets/progress_pump.h"

namespace vh {
namespace {

constexpr int kHeadingTextLimit = 255;

struct ExportContext {
  CCommonListCtrl* grid;
  ProgressPump* pump;
};

int ExportCell(void* context, int row, int column, std::string& text, int& columnType) {
  auto* ctx = static_cast<ExportContext*>(context);
  if (row > 0) {
    columnType = -1;
    text = ctx->grid->GetCellText(row - 1, column).toStdString();
    if (column == 0)
      ctx->pump->Step(row);
    return 1;
  }
  text = ctx->grid->HeaderItemText(column).toStdString().substr(0, kHeadingTextLimit);
  if (const sTarnColInfo* info = ctx->grid->FindColumnByName(text))
    columnType = info->nType;
  return 1;
}

} // namespace

int CCommonListCtrl::ExportToExcel(const std::string& path) {
  const int rows = DisplayedRowCount();
  if (rows <= 0) {
    ShowMessage("No Items in the List");
    return 0;
  }
  int written = 0;
  {
    ProgressPump pump(rows, [this](int d, int t) { ReportProgress(d, t); });
    ExportContext context{this, &pump};
    CExcelInterface excel(rows + 1, HeaderItemCount());
    excel.SetContext(&context, &ExportCell);
    excel.SetIdleCallback([](void* c) { static_cast<ExportContext*>(c)->pump->Idle(); });
    excel.SetFilePath(path);
    excel.SetBaseName(ProfileName());
    written = excel.WriteToExcel();
    if (written)
      lastExportPath_ = excel.FilePath();
  }
  ShowMessage(written ? "File is generated" : "File generation Failed");
  return written ? 1 : 0;
}

} // namespace vh
