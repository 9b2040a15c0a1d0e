// The custom-column compiler that grids install in their row engine.
#pragma once

#include "grid/row_formula.h"

#include <memory>
#include <string_view>

namespace vh {

// A CompiledCustomColumn for `storedExpression` whose decimal sort key comes
// straight from the computed value, without formatting and re-reading the
// text. Never returns null.
std::unique_ptr<CustomColumnFormula> CompileRowFormula(std::string_view storedExpression);

} // namespace vh
