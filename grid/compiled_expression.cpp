#include "grid/compiled_expression.h"

#include "grid/expression.h"
#include "grid/expression_detail.h"

#include <string>

namespace vh::expr {

// Walks the template's postfix text exactly as EvaluatePostfix walks a
// postfix text, emitting what it would do instead of doing it. A program
// that must stop (an operand that is no number, an operator short of
// operands) ends there, since nothing after it can run.
bool CompiledProgram::Compile(std::string_view text, std::span<const TemplateChar> chars) {
  code_.clear();
  conversionCode_ = 0;
  std::string postfix;
  std::vector<int32_t> origins;
  const int code = ConvertTracked(text, postfix, &origins);
  if (code != 0) {
    conversionCode_ = code;
    return true;
  }
  std::vector<TemplateChar> kinds(postfix.size());
  for (size_t k = 0; k < postfix.size(); ++k)
    if (origins[k] != kInserted)
      kinds[k] = chars[static_cast<size_t>(origins[k])];

  int depth = 0;
  size_t i = 0;
  while (i < postfix.size()) {
    const char c = postfix[i];
    if (IsSpace(c) || c == '(' || c == ')') {
      ++i;
      continue;
    }
    const std::string_view rest = std::string_view(postfix).substr(i);
    const int op = FindOperator(rest);
    if (op < 1 || (i > 0 && postfix[i - 1] == '(')) {
      const size_t n = static_cast<size_t>(OperandLength(rest));
      if (!CompileOperand(rest.substr(0, n), std::span(kinds).subspan(i, n), depth))
        return false;
      if (code_.back().kind == Instruction::kNotANumber)
        return true;
      i += n;
      continue;
    }
    code_.push_back({Instruction::kOperator, static_cast<uint8_t>(op), 0, 0});
    if (depth < 2)
      return true;
    --depth;
    i += kOperators[op].text.size();
  }
  return true;
}

// An operand token either holds no cell (a constant, read now), or is a
// cell's number alone, or that number behind one sign character. Anything
// else would read differently for different cell texts.
bool CompiledProgram::CompileOperand(std::string_view token, std::span<const TemplateChar> chars,
                                     int& depth) {
  size_t numberAt = token.size();
  bool anyCell = false;
  for (size_t k = 0; k < chars.size(); ++k) {
    if (chars[k].cell == TemplateChar::kLiteral)
      continue;
    anyCell = true;
    if (chars[k].number) {
      if (numberAt != token.size())
        return false;
      numberAt = k;
    }
  }
  Instruction in{Instruction::kNotANumber, 0, 0, 0};
  if (!anyCell) {
    if (ParseWholeNumber(token, in.constant))
      in.kind = Instruction::kConstant;
  } else if (numberAt == token.size()) {
    return false;
  } else if (token.size() == 1) {
    in.kind = Instruction::kCell;
  } else if (token.size() == 2 && numberAt == 1 && !IsWordChar(token[0])) {
    // strtod reads "+5" and "-5" and nothing else that starts this way.
    if (token[0] == '+')
      in.kind = Instruction::kCell;
    else if (token[0] == '-')
      in.kind = Instruction::kNegatedCell;
  } else {
    return false;
  }
  if (anyCell)
    in.cell = static_cast<uint16_t>(chars[numberAt].cell);
  code_.push_back(in);
  if (in.kind != Instruction::kNotANumber && ++depth > kMaxStack)
    return false;
  return true;
}

int CompiledProgram::Run(const double* numbers, double& value) const {
  if (conversionCode_ != 0)
    return conversionCode_;
  double stack[kMaxStack];
  int sp = 0;
  for (const Instruction& in : code_) {
    switch (in.kind) {
    case Instruction::kConstant:
      stack[sp++] = in.constant;
      break;
    case Instruction::kCell:
      stack[sp++] = numbers[in.cell];
      break;
    case Instruction::kNegatedCell:
      stack[sp++] = -numbers[in.cell];
      break;
    case Instruction::kNotANumber:
      return 3;
    case Instruction::kOperator:
      if (sp < 2)
        return 1;
      --sp;
      if (!ApplyOperator(in.op, stack[sp - 1], stack[sp], stack[sp - 1]))
        return 4;
      break;
    }
  }
  if (sp == 0)
    return 1;
  value = stack[sp - 1];
  return sp == 1 ? 0 : 4;
}

} // namespace vh::expr
