// A push button that shows a colour and lets the user pick another one.
//
// Colours are colour references, 0x00BBGGRR (red in the low byte), as the
// settings store them. A click opens a colour dialog (a child of the button,
// object name "colourDialog", window-modal, not blocking); choosing a colour
// there sets it and emits ColourChanged; cancelling changes nothing.
#pragma once

#include <QColor>
#include <QPushButton>

#include <cstdint>

class QColorDialog;

namespace vh {

QColor ToQColor(uint32_t colourRef);
// The colour reference of `colour`, its alpha dropped.
uint32_t ToColourRef(const QColor& colour);

class CColourButton : public QPushButton {
  Q_OBJECT
public:
  explicit CColourButton(const QString& text = {}, QWidget* parent = nullptr);

  uint32_t Colour() const { return colour_; }
  // Shows `colourRef` without emitting ColourChanged.
  void SetColour(uint32_t colourRef);

signals:
  void ColourChanged(uint32_t colourRef);

private:
  void Choose();
  void UpdateSwatch();

  uint32_t colour_ = 0;
  QColorDialog* dialog_ = nullptr;
};

} // namespace vh
