// The colours of one row. Order, each step overriding the one before:
//   the grid's defaults (palette, or SetDefaultColours)
//   the owner's outputs for the first data column
//   the keyword colour (text only), when the grid allows colouring
//   the row-colour callback (text only), when installed and enabled
// Keywords are compared whole, ignoring case, with the text of the keyword
// column; the first keyword in the list that matches wins.
#include "grid/widgets/filter_list_ctrl.h"

#include "grid/widgets/filter_list_model.h"
#include "grid/widgets/row_delegate.h"

#include <algorithm>
#include <cctype>

namespace vh {
namespace {

QColor FromColourRef(int32_t c) {
  const auto u = uint32_t(c);
  return QColor(int(u & 0xFF), int((u >> 8) & 0xFF), int((u >> 16) & 0xFF));
}

} // namespace

void CFilterListCtrl::SetDefaultColours(int32_t text, int32_t background) {
  defaultText_ = text;
  defaultBackground_ = background;
  viewport()->update();
}

void CFilterListCtrl::FillEmptyRow(QPainter& painter, const QRect& band) {
  FillRowBackground(&painter, band,
                    defaultBackground_ != -1 ? FromColourRef(defaultBackground_)
                                             : DefaultBackground(),
                    gradient_);
}

bool CFilterListCtrl::KeywordColour(uint64_t itemData, int32_t& colour) {
  const sListAppearance& a = Appearance();
  if (!ColouringAllowed() || !a.keywordColouring || a.keywordColumn < 0 || !a.keywordTexts ||
      !a.keywordColours)
    return false;
  std::string text;
  if (!engine_.GetCellText(itemData, a.keywordColumn, text))
    return false;
  std::transform(text.begin(), text.end(), text.begin(),
                 [](unsigned char c) { return char(std::tolower(c)); });
  const auto& words = *a.keywordTexts;
  const size_t n = std::min(words.size(), a.keywordColours->size());
  for (size_t i = 0; i < n; ++i) {
    if (words[i] == text) {
      colour = int32_t((*a.keywordColours)[i]);
      return true;
    }
  }
  return false;
}

CFilterListCtrl::RowColours CFilterListCtrl::ColoursOfRow(int row) {
  RowColours colours;
  colours.text = defaultText_ != -1 ? FromColourRef(defaultText_) : DefaultTextColour();
  colours.background =
      defaultBackground_ != -1 ? FromColourRef(defaultBackground_) : DefaultBackground();
  const int engineRow = model_->EngineRow(row);
  colours.itemData = engine_.GetItemData(engineRow);
  if (colours.itemData == 0)
    return colours;
  std::string text;
  CellStyle style;
  if (engine_.GetCellText(colours.itemData, 0, text, style)) {
    if (style.textColour != -1)
      colours.text = FromColourRef(style.textColour);
    if (style.background != -1)
      colours.background = FromColourRef(style.background);
  }
  int32_t textColour = -1;
  if (KeywordColour(colours.itemData, textColour))
    colours.text = FromColourRef(textColour);
  if (rowColour_ && rowColourOn_) {
    textColour = -1;
    rowColour_(this, colours.itemData, textColour, engineRow, ListControlId());
    if (textColour != -1)
      colours.text = FromColourRef(textColour);
  }
  return colours;
}

} // namespace vh
