// An expression text with holes for cell values, converted and walked once
// into a small postfix program that evaluates with the same codes and the
// same value as EvaluateExpression over the filled-in text.
//
// The text is a template: the cell references of a custom column filled in
// with a stand-in that tokenises exactly as the real cell texts will (a
// digit for a plain number, a minus and a digit for a negative one). Every
// tokenising decision depends on the stand-in only through its character
// classes, so the program is valid for every cell text of that shape; only
// the numbers differ, and they are read once per cell.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace vh::expr {

// What one template character stands for.
struct TemplateChar {
  static constexpr int32_t kLiteral = -1;
  // kLiteral, or the index of the cell reference the character stands in for.
  int32_t cell = kLiteral;
  // True for the digit that stands in for the cell's number; false for the
  // minus of a negative cell and for literal text.
  bool number = false;
};

class CompiledProgram {
public:
  // Deeper programs are left to the text path.
  static constexpr int kMaxStack = 32;

  // Prepares `text` whose characters are described by `chars` (same length).
  // Returns false when the template cannot stand for every cell text of its
  // shape (a cell's number merges with literal letters or digits, as `2"7"`
  // does) or the program would be too deep; the caller then evaluates text.
  // May throw std::bad_alloc.
  bool Compile(std::string_view text, std::span<const TemplateChar> chars);

  // EvaluateExpression over the filled-in text, where cell k's number reads
  // as `numbers[k]` (the value of its digits, without the minus of a
  // negative cell). Writes `value` exactly when EvaluateExpression would.
  int Run(const double* numbers, double& value) const;

private:
  struct Instruction {
    enum Kind : uint8_t { kConstant, kCell, kNegatedCell, kNotANumber, kOperator };
    Kind kind;
    uint8_t op;
    uint16_t cell;
    double constant;
  };
  bool CompileOperand(std::string_view token, std::span<const TemplateChar> chars, int& depth);

  int conversionCode_ = 0;
  std::vector<Instruction> code_;
};

} // namespace vh::expr
