// The edits the appearance dialog makes to a grid's sListAppearance, and
// which texts it accepts. Qt-free.
//
// The keyword arrays of an sListAppearance may be shared with other records
// (every grid without its own value shares the defaults' arrays), so every
// edit here first gives the record arrays of its own: editing one grid's
// keywords never changes another grid's or the defaults.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "settings/list_appearance.h"

namespace vh {

// Largest font size offered, in points.
inline constexpr int kMaxFontPoints = 999;

// True when `text` can be stored in the appearance value: not empty and
// without a comma (the value's separator, never escaped).
bool IsStorableText(std::string_view text);

// True for a whole number of points from 1 to kMaxFontPoints, digits only.
bool IsFontSize(std::string_view text);

// Number of keyword pairs (0 without arrays).
size_t KeywordCount(const sListAppearance& appearance);

// Adds `keyword` (lower-cased) with `colour`, or gives an existing equal
// keyword the new colour. Returns its index, or -1 (nothing changed) when
// the keyword is not storable.
int SetKeyword(sListAppearance& appearance, std::string_view keyword, uint32_t colour);

// Replaces the pair at `index` by `keyword` (lower-cased) and `colour`.
// Returns false (nothing changed) for an index out of range, a keyword that
// is not storable, or one that another pair already has.
bool ChangeKeyword(sListAppearance& appearance, size_t index, std::string_view keyword,
                   uint32_t colour);

// Removes the pair at `index`; false when there is none.
bool RemoveKeyword(sListAppearance& appearance, size_t index);

// Sets the keyword-colouring flag from the record: on when a keyword column
// is chosen and at least one keyword is set, as a stored value reads back.
void UpdateKeywordColouring(sListAppearance& appearance);

} // namespace vh
