// Chooses a grid's font: a face combo (the installed families; another name
// may be typed) and a size combo (common point sizes; another whole number
// may be typed). OK is enabled only while the face is storable (not empty,
// no comma) and the size is a whole number of points from 1 to 999
// (appearance_edit.h).
#pragma once

#include <QDialog>

#include <string>

class QComboBox;
class QDialogButtonBox;

namespace vh {

class CFontSettingDlg : public QDialog {
  Q_OBJECT
public:
  explicit CFontSettingDlg(QWidget* parent = nullptr);

  // Shows `face` and `size` (points, decimal text) in the combos; a face
  // that is not installed is shown as typed.
  void SetFontChoice(const std::string& face, const std::string& size);
  // The face and size now in the combos.
  std::string Face() const;
  std::string Size() const;

private:
  void UpdateOk();

  QComboBox* face_;
  QComboBox* size_;
  QDialogButtonBox* buttons_;
};

} // namespace vh
