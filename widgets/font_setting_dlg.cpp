#include "widgets/font_setting_dlg.h"

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFontDatabase>
#include <QFormLayout>
#include <QPushButton>

#include "widgets/appearance_edit.h"

namespace vh {
namespace {

constexpr int kOfferedSizes[] = {6, 7, 8, 9, 10, 11, 12, 14, 16, 18, 20, 22, 24, 26, 28, 36};

void ShowText(QComboBox* combo, const QString& text) {
  const int index = combo->findText(text);
  if (index >= 0)
    combo->setCurrentIndex(index);
  else
    combo->setEditText(text);
}

} // namespace

CFontSettingDlg::CFontSettingDlg(QWidget* parent)
    : QDialog(parent), face_(new QComboBox(this)), size_(new QComboBox(this)),
      buttons_(new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this)) {
  setWindowTitle(QStringLiteral("Font"));
  face_->setObjectName(QStringLiteral("face"));
  size_->setObjectName(QStringLiteral("size"));
  face_->setEditable(true);
  face_->setInsertPolicy(QComboBox::NoInsert);
  face_->addItems(QFontDatabase::families());
  size_->setEditable(true);
  size_->setInsertPolicy(QComboBox::NoInsert);
  for (int points : kOfferedSizes)
    size_->addItem(QString::number(points));

  auto* form = new QFormLayout(this);
  form->addRow(QStringLiteral("&Face:"), face_);
  form->addRow(QStringLiteral("&Size:"), size_);
  form->addRow(buttons_);

  connect(buttons_, &QDialogButtonBox::accepted, this, &QDialog::accept);
  connect(buttons_, &QDialogButtonBox::rejected, this, &QDialog::reject);
  connect(face_, &QComboBox::editTextChanged, this, &CFontSettingDlg::UpdateOk);
  connect(size_, &QComboBox::editTextChanged, this, &CFontSettingDlg::UpdateOk);
  UpdateOk();
}

void CFontSettingDlg::SetFontChoice(const std::string& face, const std::string& size) {
  ShowText(face_, QString::fromStdString(face));
  ShowText(size_, QString::fromStdString(size));
  UpdateOk();
}

std::string CFontSettingDlg::Face() const {
  return face_->currentText().toStdString();
}

std::string CFontSettingDlg::Size() const {
  return size_->currentText().trimmed().toStdString();
}

void CFontSettingDlg::UpdateOk() {
  buttons_->button(QDialogButtonBox::Ok)->setEnabled(IsStorableText(Face()) && IsFontSize(Size()));
}

} // namespace vh
