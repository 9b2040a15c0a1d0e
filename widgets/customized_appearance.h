// The appearance dialog of a grid (dialog 1007, "Customize Appearance :"
// followed directly by the grid's profile name): background and text
// colours, the font (through CFontSettingDlg), and keyword colouring, a
// keyword column with keyword/colour pairs.
//
// Controls, by object name: "background" and "text" colour buttons; "font"
// opens the font dialog ("fontDialog"), "fontLabel" shows the choice;
// "keywordColumn" combo ("(none)" first, then the grid's columns);
// "keywords" list of pairs; "keyword" edit and "keywordColour" button;
// "add" (adds the keyword, or recolours an equal one), "change" (replaces
// the selected pair), "remove"; "apply" ("Apply Settings", the default
// button) and "close". Keywords are kept in lower case, as they are stored
// and matched; a keyword with a comma cannot be added (the stored value is
// comma-separated and never escaped).
//
// "Apply Settings" writes the grid's CUSTOMIZE_LISTS value
// (SaveListAppearance) and emits Applied, so the grid takes the new look at
// once; when the file cannot be written the look is still applied and
// kAppearanceNotSaved is shown.
#pragma once

#include <QDialog>

#include <string>
#include <vector>

#include "settings/list_appearance.h"

class QComboBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace vh {

class CColourButton;
class CFontSettingDlg;

inline constexpr int kCustomizedAppearanceDialogId = 1007;
inline constexpr const char* kAppearanceCaption = "Customize Appearance :";
inline constexpr const char* kAppearanceNotSaved = "Appearance settings could not be saved";

class CCustomizedAppearance : public QDialog {
  Q_OBJECT
public:
  explicit CCustomizedAppearance(QWidget* parent = nullptr);

  // Takes the grid to customise: its profile name and control id (the
  // settings key and the caption), its column names by column number (for
  // the keyword column) and its present appearance.
  void SetGrid(const std::string& profileName, int controlId,
               const std::vector<std::string>& columns, const sListAppearance& appearance);
  // Shows the dialog in front, centred over `grid` (as it is when opened
  // from a grid's "Customize" command); a null grid leaves it where it is.
  void ShowOver(QWidget* grid);
  // The appearance as the controls now set it.
  const sListAppearance& Appearance() const { return appearance_; }

signals:
  // "Apply Settings" was pressed; `appearance` is what was written.
  void Applied(const vh::sListAppearance& appearance);

private:
  void BuildLayout();
  void ShowAppearance();
  void ShowKeywords(int select);
  void ShowFont();
  void UpdateButtons();
  void OnSelectKeyword();
  void Apply();

  sListAppearance appearance_;
  std::string profileName_;
  int controlId_ = 0;

  CColourButton* background_;
  CColourButton* text_;
  QLabel* fontLabel_;
  QPushButton* font_;
  CFontSettingDlg* fontDialog_;
  QComboBox* keywordColumn_;
  QListWidget* keywords_;
  QLineEdit* keyword_;
  CColourButton* keywordColour_;
  QPushButton* add_;
  QPushButton* change_;
  QPushButton* remove_;
  QPushButton* apply_;
  QPushButton* close_;
};

} // namespace vh
