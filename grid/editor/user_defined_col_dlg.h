// The custom-column editor's dialog (resource 1008): the controls, their
// ids and their layout. Every click goes to vh::UserColumnEditor, which
// checks, shows the messages and changes the grid.
#pragma once

#include "grid/custom_column_grid.h"
#include "grid/user_column_editor.h"

#include <QDialog>

class QComboBox;
class QGridLayout;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;

class CUserDefinedColDlg : public QDialog {
  Q_OBJECT

public:
  static constexpr int kDialogId = 1008;
  static constexpr int kNameEditId = 1022;
  static constexpr int kCustomComboId = 1011;
  static constexpr int kColumnListId = 1009;
  static constexpr int kExpressionEditId = 1010;
  static constexpr int kConfirmId = 1;
  static constexpr int kCancelId = 2;

  explicit CUserDefinedColDlg(QWidget* parent = nullptr);

  // Shows the dialog in front and starts a session over `grid` in `mode`
  // (vh::UserColumnMode). Returns false, with the dialog shown and empty,
  // when the grid refused (the message has been shown).
  bool Open(vh::CustomColumnGrid& grid, int mode);

private:
  void BuildControls();
  QGridLayout* BuildButtonPad();
  void LayOut(QGridLayout* pad);
  void OnExpressionButton(int controlId);
  void OnConfirm();
  void OnCustomColumnChosen(int index);
  void ShowExpression(const std::string& text);
  void ApplyOutcome(vh::EditorOutcome outcome);

  vh::UserColumnEditor editor_;
  QLineEdit* name_ = nullptr;
  QComboBox* custom_ = nullptr;
  QListWidget* columns_ = nullptr;
  QPlainTextEdit* expression_ = nullptr;
  QPushButton* confirm_ = nullptr;
  QPushButton* cancel_ = nullptr;
};
