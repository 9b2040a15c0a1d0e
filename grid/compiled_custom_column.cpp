#include "grid/compiled_expression.h"
#include "grid/custom_column.h"
#include "grid/custom_column_detail.h"
#include "grid/expression_detail.h"

#include <cstring>

namespace vh {
namespace {

// Every combination of plain and negative cells gets its own program, built
// when first met; beyond this many references the text path does the work.
constexpr size_t kMaxCompiledCells = 8;
constexpr uint64_t kSignBit = uint64_t{1} << 63;

struct Variant {
  bool compiled = false;
  bool hasDivisor = false;
  expr::CompiledProgram whole;
  expr::CompiledProgram divisor;
};

} // namespace

struct CompiledCustomColumn::State {
  std::string stored;
  std::vector<custom::Piece> pieces; // views into `stored`
  std::vector<int> columns;          // one per reference, in text order
  std::vector<std::unique_ptr<Variant>> variants;
  std::vector<std::string> texts;
  std::vector<double> numbers;

  custom::Outcome Evaluate(uint64_t itemData, CellTextSource& cells);
  bool EvaluateForms(const uint64_t* forms, custom::Outcome& out);
  bool Classify(unsigned& shape);
  const Variant& VariantFor(unsigned shape);
  std::string Substituted() const;
};

custom::Outcome CompiledCustomColumn::State::Evaluate(uint64_t itemData, CellTextSource& cells) {
  custom::Outcome out;
  custom::ComputeFrame frame(this, 0);
  if (!frame.Entered()) {
    out.result = kCustomCycle;
    return out;
  }
  CellStyle style;
  for (size_t k = 0; k < columns.size(); ++k) {
    texts[k].clear();
    const bool fetched = cells.GetCellText(itemData, columns[k], texts[k], style);
    if (custom::ComputeFrame::Stopped()) {
      out.result = kCustomCycle;
      return out;
    }
    if (!fetched)
      return out;
  }
  unsigned shape = 0;
  if (!Classify(shape))
    return custom::FinishSubstituted(Substituted());
  const Variant& variant = VariantFor(shape);
  if (!variant.compiled)
    return custom::FinishSubstituted(Substituted());
  return custom::Decide(variant.hasDivisor, [&](bool whole, double& holder) {
    return (whole ? variant.whole : variant.divisor).Run(numbers.data(), holder);
  });
}

// Evaluate after the fetch, with each cell's classification already made
// once per column (CellFormBits). False when some cell needs its text.
bool CompiledCustomColumn::State::EvaluateForms(const uint64_t* forms, custom::Outcome& out) {
  if (variants.empty())
    return false;
  unsigned shape = 0;
  for (size_t k = 0; k < columns.size(); ++k) {
    uint64_t bits = forms[k];
    if (bits == kFormNeedsText || bits == kFormNotFetched)
      return false;
    if (bits & kSignBit)
      shape |= 1u << k;
    bits &= ~kSignBit;
    std::memcpy(&numbers[k], &bits, sizeof bits);
  }
  const Variant& variant = VariantFor(shape);
  if (!variant.compiled)
    return false;
  out = custom::Decide(variant.hasDivisor, [&](bool whole, double& holder) {
    return (whole ? variant.whole : variant.divisor).Run(numbers.data(), holder);
  });
  return true;
}

// One bit per reference: set for a negative cell. False when some cell
// reads in a way no program stands for.
bool CompiledCustomColumn::State::Classify(unsigned& shape) {
  if (variants.empty())
    return false;
  for (size_t k = 0; k < texts.size(); ++k) {
    switch (expr::ClassifyCellText(texts[k], numbers[k])) {
    case expr::CellForm::kZero:
    case expr::CellForm::kPlain:
      break;
    case expr::CellForm::kNegative:
      shape |= 1u << k;
      break;
    case expr::CellForm::kOther:
      return false;
    }
  }
  return true;
}

// The template puts "1" where a cell's number goes and "-1" for a negative
// cell: the same character classes as every text of that shape.
const Variant& CompiledCustomColumn::State::VariantFor(unsigned shape) {
  std::unique_ptr<Variant>& slot = variants[shape];
  if (slot)
    return *slot;
  slot = std::make_unique<Variant>();
  std::string text;
  std::vector<expr::TemplateChar> chars;
  int32_t cell = 0;
  for (const custom::Piece& piece : pieces) {
    if (!piece.isColumn) {
      text.append(piece.text);
      chars.resize(text.size());
      continue;
    }
    if (shape & (1u << cell)) {
      text += '-';
      chars.push_back({cell, false});
    }
    text += '1';
    chars.push_back({cell, true});
    ++cell;
  }
  const size_t slash = text.find('/');
  slot->hasDivisor = slash != std::string::npos;
  slot->compiled =
      slot->whole.Compile(text, chars) &&
      (!slot->hasDivisor || slot->divisor.Compile(std::string_view(text).substr(slash + 1),
                                                  std::span(chars).subspan(slash + 1)));
  return *slot;
}

std::string CompiledCustomColumn::State::Substituted() const {
  std::string text;
  size_t cell = 0;
  for (const custom::Piece& piece : pieces) {
    if (piece.isColumn)
      custom::AppendCellText(text, texts[cell++]);
    else
      text.append(piece.text);
  }
  return text;
}

CompiledCustomColumn::CompiledCustomColumn(std::string_view storedExpression)
    : state_(std::make_unique<State>()) {
  state_->stored.assign(storedExpression);
  state_->pieces = custom::SplitStored(state_->stored);
  for (const custom::Piece& piece : state_->pieces)
    if (piece.isColumn)
      state_->columns.push_back(piece.column);
  state_->texts.resize(state_->columns.size());
  state_->numbers.resize(state_->columns.size());
  if (state_->columns.size() <= kMaxCompiledCells)
    state_->variants.resize(size_t{1} << state_->columns.size());
}

CompiledCustomColumn::~CompiledCustomColumn() = default;
CompiledCustomColumn::CompiledCustomColumn(CompiledCustomColumn&&) noexcept = default;
CompiledCustomColumn& CompiledCustomColumn::operator=(CompiledCustomColumn&&) noexcept = default;

const std::string& CompiledCustomColumn::StoredExpression() const {
  static const std::string empty;
  return state_ ? state_->stored : empty;
}

int CompiledCustomColumn::Compute(uint64_t itemData, CellTextSource& cells, std::string& outText) {
  if (!state_)
    return kCustomUnchanged;
  try {
    const custom::Outcome outcome = state_->Evaluate(itemData, cells);
    if (outcome.result == kCustomWritten)
      custom::WriteOutcome(outcome, outText);
    return outcome.result;
  } catch (...) {
    return kCustomUnchanged;
  }
}

int CompiledCustomColumn::ComputeSortKey(uint64_t itemData, CellTextSource& cells, double& key) {
  if (!state_)
    return kCustomUnchanged;
  try {
    const custom::Outcome outcome = state_->Evaluate(itemData, cells);
    if (outcome.result == kCustomWritten)
      key = custom::SortKeyOf(outcome);
    return outcome.result;
  } catch (...) {
    return kCustomUnchanged;
  }
}

int CompiledCustomColumn::ComputeCellValue(uint64_t itemData, CellTextSource& cells,
                                           CustomCellValue& value) {
  if (!state_)
    return kCustomUnchanged;
  try {
    const custom::Outcome outcome = state_->Evaluate(itemData, cells);
    if (outcome.result == kCustomWritten) {
      value.kind =
          outcome.dividedByZero ? CustomCellValue::kDividedByZero : CustomCellValue::kValue;
      value.value = custom::SortKeyOf(outcome);
    }
    return outcome.result;
  } catch (...) {
    return kCustomUnchanged;
  }
}

bool CompiledCustomColumn::CalculateCellValue(uint64_t itemData, CellTextSource& cells, int,
                                              CustomCellValue& value) {
  value = CustomCellValue{};
  ComputeCellValue(itemData, cells, value);
  return true;
}

void CompiledCustomColumn::Calculate(uint64_t itemData, CellTextSource& cells, int,
                                     std::string& outText) {
  Compute(itemData, cells, outText);
}

bool CompiledCustomColumn::CalculateSortKey(uint64_t itemData, CellTextSource& cells, int,
                                            double& key) {
  double value = 0;
  key = ComputeSortKey(itemData, cells, value) == kCustomWritten ? value : 0.0;
  return true;
}

std::vector<int> CompiledCustomColumn::FormColumns() const {
  if (!state_ || state_->variants.empty())
    return {};
  return state_->columns;
}

bool CompiledCustomColumn::CalculateFromForms(const uint64_t* forms, CustomCellValue& value) {
  value = CustomCellValue{};
  if (!state_)
    return false;
  try {
    custom::Outcome outcome;
    if (!state_->EvaluateForms(forms, outcome))
      return false;
    if (outcome.result == kCustomWritten) {
      value.kind =
          outcome.dividedByZero ? CustomCellValue::kDividedByZero : CustomCellValue::kValue;
      value.value = custom::SortKeyOf(outcome);
    }
    return true;
  } catch (...) {
    return false;
  }
}

uint64_t CellFormBits(std::string_view text) {
  double number = 0;
  const expr::CellForm form = expr::ClassifyCellText(text, number);
  if (form == expr::CellForm::kZero)
    return 0;
  if (form == expr::CellForm::kOther)
    return kFormNeedsText;
  uint64_t bits;
  std::memcpy(&bits, &number, sizeof bits);
  // The number read after any minus carries no sign of its own.
  if ((bits & kSignBit) || bits == kFormNeedsText || bits == kFormNotFetched)
    return kFormNeedsText;
  return form == expr::CellForm::kNegative ? bits | kSignBit : bits;
}

std::unique_ptr<CustomColumnFormula> CompileCustomColumn(std::string_view storedExpression) {
  return std::make_unique<CompiledCustomColumn>(storedExpression);
}

} // namespace vh
