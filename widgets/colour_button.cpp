#include "widgets/colour_button.h"

#include <QColorDialog>
#include <QPainter>
#include <QPixmap>

namespace vh {

QColor ToQColor(uint32_t c) {
  return QColor(static_cast<int>(c & 0xFF), static_cast<int>((c >> 8) & 0xFF),
                static_cast<int>((c >> 16) & 0xFF));
}

uint32_t ToColourRef(const QColor& colour) {
  const QColor rgb = colour.toRgb();
  return static_cast<uint32_t>(rgb.red()) | (static_cast<uint32_t>(rgb.green()) << 8) |
         (static_cast<uint32_t>(rgb.blue()) << 16);
}

CColourButton::CColourButton(const QString& text, QWidget* parent) : QPushButton(text, parent) {
  connect(this, &QPushButton::clicked, this, &CColourButton::Choose);
  UpdateSwatch();
}

void CColourButton::SetColour(uint32_t colourRef) {
  colour_ = colourRef & 0x00FFFFFF;
  UpdateSwatch();
}

void CColourButton::UpdateSwatch() {
  const QSize size(iconSize().width() * 2, iconSize().height());
  QPixmap swatch(size);
  swatch.fill(ToQColor(colour_));
  QPainter painter(&swatch);
  painter.setPen(palette().color(QPalette::ButtonText));
  painter.drawRect(swatch.rect().adjusted(0, 0, -1, -1));
  painter.end();
  setIcon(QIcon(swatch));
  setIconSize(size);
}

void CColourButton::Choose() {
  if (dialog_ == nullptr) {
    dialog_ = new QColorDialog(this);
    dialog_->setObjectName(QStringLiteral("colourDialog"));
    dialog_->setOption(QColorDialog::DontUseNativeDialog);
    dialog_->setWindowModality(Qt::WindowModal);
    connect(dialog_, &QColorDialog::colorSelected, this, [this](const QColor& colour) {
      if (!colour.isValid())
        return;
      SetColour(ToColourRef(colour));
      emit ColourChanged(colour_);
    });
  }
  dialog_->setCurrentColor(ToQColor(colour_));
  dialog_->open();
}

} // namespace vh
