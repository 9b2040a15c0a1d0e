#include "grid/expression.h"

#include "grid/expression_detail.h"

#include <algorithm>
#include <climits>

using namespace vh::expr;

namespace {

constexpr int8_t kOpenParen = 0;

// Appends to the postfix text and, when asked, where each character came
// from, so that the compiled form can map tokens back to cell references.
class PostfixWriter {
public:
  PostfixWriter(std::string& out, std::vector<int32_t>* origins) : out_(out), origins_(origins) {
    out_.clear();
    if (origins_)
      origins_->clear();
  }
  bool empty() const { return out_.empty(); }
  void Inserted(std::string_view text) {
    out_.append(text);
    if (origins_)
      origins_->insert(origins_->end(), text.size(), kInserted);
  }
  void Copied(std::string_view infix, size_t at, size_t n) {
    out_.append(infix.substr(at, n));
    if (origins_)
      for (size_t k = 0; k < n; ++k)
        origins_->push_back(static_cast<int32_t>(at + k));
  }
  void Operator(int op) {
    Inserted(" ");
    Inserted(kOperators[op].text);
  }

private:
  std::string& out_;
  std::vector<int32_t>* origins_;
};

// An operator is a sign when nothing but white space precedes it, or when
// the nearest earlier non-space character starts an operator. The look-back
// reads the whole run from that character, so "3*-5" finds "*-" (no
// operator) and takes the minus as binary.
bool IsSignAt(std::string_view text, size_t i) {
  while (i > 0) {
    --i;
    if (!IsSpace(text[i]))
      return FindOperator(text.substr(i)) >= 1;
  }
  return true;
}

int Precedence(int8_t entry) {
  return entry >= 1 ? kOperators[entry].precedence : 1;
}

int EvaluateUnguarded(std::string_view postfix, double& value) {
  std::vector<double> stack;
  size_t i = 0;
  while (i < postfix.size()) {
    const char c = postfix[i];
    if (IsSpace(c) || c == '(' || c == ')') {
      ++i;
      continue;
    }
    const int op = FindOperator(postfix.substr(i));
    if (op < 1 || (i > 0 && postfix[i - 1] == '(')) {
      const size_t n = static_cast<size_t>(OperandLength(postfix.substr(i)));
      double number = 0;
      if (!ParseWholeNumber(postfix.substr(i, n), number))
        return 3;
      stack.push_back(number);
      i += n;
      continue;
    }
    if (stack.size() < 2)
      return 1;
    const double b = stack.back();
    stack.pop_back();
    double& a = stack.back();
    if (!ApplyOperator(op, a, b, a))
      return 4;
    i += kOperators[op].text.size();
  }
  if (stack.empty())
    return 1;
  value = stack.back();
  return stack.size() == 1 ? 0 : 4;
}

} // namespace

int FindOperator(std::string_view text) {
  // No operator is longer than two characters, so a third one already
  // decides; reading further would make long runs quadratic.
  size_t run = 0;
  while (run < text.size() && run < 3 && IsOperatorChar(text[run]))
    ++run;
  if (run == 0)
    return -1;
  const std::string_view whole = text.substr(0, run);
  for (int op = 1; op < kOperatorCount; ++op)
    if (kOperators[op].text == whole)
      return op;
  return -1;
}

int OperandLength(std::string_view text) {
  const size_t limit = std::min<size_t>(text.size(), INT_MAX);
  size_t n = 0;
  while (n < limit && IsWordChar(text[n]))
    ++n;
  if (n == 0 && limit > 0) {
    n = 1;
    while (n < limit && IsWordChar(text[n]))
      ++n;
  }
  return static_cast<int>(n);
}

namespace {

// Operator-precedence conversion with a stack of operator indices (0 stands
// for "("). Binary operators pop while the stacked one binds at least as
// tightly, so everything groups from the left. A "0" goes in front of a
// binary operator that opens the output or follows a one-character
// operator token, turning "(-5)" into 0 - 5; after two-character operators
// it deliberately does not.
class Converter {
public:
  Converter(std::string_view infix, std::string& postfix, std::vector<int32_t>* origins)
      : infix_(infix), out_(postfix, origins) {}

  int Run() {
    while (i_ < infix_.size()) {
      const char c = infix_[i_];
      if (IsSpace(c)) {
        ++i_;
      } else if (c == '(') {
        stack_.push_back(kOpenParen);
        ++i_;
      } else if (c == ')') {
        if (!CloseParen())
          return 1;
      } else {
        const int op = FindOperator(infix_.substr(i_));
        if (op < 1 || IsSignAt(infix_, i_)) {
          if (!Operand(op >= 1))
            return 3;
        } else {
          BinaryOperator(op);
        }
      }
    }
    while (!stack_.empty()) {
      if (stack_.back() == kOpenParen)
        return 1;
      out_.Operator(stack_.back());
      stack_.pop_back();
    }
    return 0;
  }

private:
  bool CloseParen() {
    for (;;) {
      if (stack_.empty())
        return false;
      const int8_t top = stack_.back();
      stack_.pop_back();
      if (top == kOpenParen)
        break;
      out_.Operator(top);
    }
    ++i_;
    return true;
  }

  // A signed operand is written in parentheses, which is how the evaluator
  // tells it from an operator.
  bool Operand(bool sign) {
    const size_t n = static_cast<size_t>(OperandLength(infix_.substr(i_)));
    if (n == 0)
      return false;
    out_.Inserted(sign ? " (" : " ");
    out_.Copied(infix_, i_, n);
    if (sign)
      out_.Inserted(")");
    previous_ = infix_.substr(i_, n);
    i_ += n;
    return true;
  }

  void BinaryOperator(int op) {
    if (out_.empty() || (previous_.size() == 1 && FindOperator(previous_) >= 1))
      out_.Inserted(" 0");
    previous_ = kOperators[op].text;
    i_ += previous_.size();
    while (!stack_.empty() && stack_.back() != kOpenParen &&
           kOperators[op].precedence <= Precedence(stack_.back())) {
      out_.Operator(stack_.back());
      stack_.pop_back();
    }
    stack_.push_back(static_cast<int8_t>(op));
  }

  std::string_view infix_;
  PostfixWriter out_;
  std::vector<int8_t> stack_;
  std::string_view previous_;
  size_t i_ = 0;
};

} // namespace

namespace vh::expr {

int ConvertTracked(std::string_view infix, std::string& postfix, std::vector<int32_t>* origins) {
  return Converter(infix, postfix, origins).Run();
}

} // namespace vh::expr

int ConvertToPostfix(std::string_view infix, std::string& postfix) {
  try {
    return ConvertTracked(infix, postfix, nullptr);
  } catch (...) {
    return 4;
  }
}

int EvaluatePostfix(std::string_view postfix, double& value) {
  try {
    return EvaluateUnguarded(postfix, value);
  } catch (...) {
    return 4;
  }
}

int EvaluateExpression(std::string_view text, double& value) {
  std::string postfix;
  int code = 0;
  try {
    code = ConvertTracked(text, postfix, nullptr);
  } catch (...) {
    return 4;
  }
  if (code != 0)
    return code;
  // The evaluation writes `value` only as its last step, so a throw leaves
  // the caller's value as it was, and the conversion's 0 stands.
  try {
    return EvaluateUnguarded(postfix, value);
  } catch (...) {
    return code;
  }
}
