// The filter text made from the values picked in a column's distinct-value
// pop-up: the picks, in list order, joined with "~"; a pick that already
// occurs anywhere inside the text joined so far (a substring test over the
// whole text, separators included) is left out, so a value contained in an
// earlier pick is lost, as users of the pop-up know it. An empty pick always
// occurs and is left out.
//
// Same result as JoinFilterSelection (filter_match.h), but in time about
// linear in the joined text (times the number of distinct pick lengths)
// rather than quadratic, so applying a million picks (Ctrl+A, Enter) takes
// seconds, not hours.
#pragma once

#include <string>
#include <vector>

namespace vh {

std::string JoinFilterTexts(const std::vector<std::string>& picked);

} // namespace vh
