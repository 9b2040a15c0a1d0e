// CMarkUnMark: marks a quantity of the selected holding as margin for the FO
// or currency segment, or unmarks it (dialog 21004). It reads the selection
// and sends through the small interfaces below, so any grid and any link
// can stand behind it.
#pragma once

#include <QDialog>

#include <functional>
#include <optional>
#include <string>

#include "holdings/mark_unmark.h"

class QLineEdit;

namespace vh {

enum MarkUnmarkControl : int {
  kDlgMarkUnmark = 21004,
  kEditMarkNseExchange = 21040,
  kEditMarkNseSymbol = 21003,
  kEditMarkBseExchange = 21042,
  kEditMarkBseSymbol = 21043,
  kEditMarkClient = 1028,
  kEditMarkProduct = 1060,
  kEditMarkQuantity = 21044,
  kButtonMarkSubmit = 1,
  kButtonMarkCancel = 2,
};

inline constexpr const char* kMarkDialogPlacement = "View-Holding/Mark_UnMark";

// The holdings grid's first selected row, as the dialog needs it; nullopt
// when no row (or a row without a record) is selected.
class HoldingSelection {
public:
  virtual std::optional<MarkHolding> SelectedHolding() = 0;

protected:
  ~HoldingSelection() = default;
};

// Sends a request on the back-end link; 1 when sent, 0 after the link has
// reported the failure.
using SendRequestFn = std::function<int(const CLinkRequest&)>;

class CMarkUnMark final : public QDialog {
  Q_OBJECT
public:
  // `selection` outlives the dialog; `userId` goes out in 54247.
  CMarkUnMark(HoldingSelection& selection, SendRequestFn send, std::string userId,
              QWidget* parent = nullptr);
  ~CMarkUnMark() override;

  // One of the four menu commands (4011..4014): with a selected holding,
  // fills the dialog for the operation, shows it and brings it to the
  // front. Returns false and does nothing without a selection or for
  // another command.
  bool Open(int command);

  std::optional<MarkOperationInfo> Operation() const { return operation_; }

private:
  void OnSubmit();
  QLineEdit* AddEdit(int id, const char* label, QRect at, bool readOnly);

  HoldingSelection& selection_;
  SendRequestFn send_;
  std::string userId_;
  MarkHolding holding_;
  std::optional<MarkOperationInfo> operation_;
  QLineEdit* nseExchange_ = nullptr;
  QLineEdit* nseSymbol_ = nullptr;
  QLineEdit* bseExchange_ = nullptr;
  QLineEdit* bseSymbol_ = nullptr;
  QLineEdit* client_ = nullptr;
  QLineEdit* product_ = nullptr;
  QLineEdit* quantity_ = nullptr;
};

} // namespace vh
