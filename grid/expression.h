// The expression engine behind computed (custom) grid columns.
//
// An expression is checked and evaluated in two passes over plain text:
// ConvertToPostfix turns infix text into postfix text, EvaluatePostfix
// computes that text with a stack of doubles. Both passes recognise tokens
// the same way (FindOperator, OperandLength), so a postfix text is ordinary
// text with one space before every token.
//
// Result codes shared by the three evaluating functions:
//   0  success
//   1  unbalanced parenthesis, an operator short of operands, or nothing to
//      evaluate
//   3  an operand token that is not wholly a number
//   4  operands left over after evaluation, or a failure (remainder by zero,
//      INT_MIN % -1, an exception during conversion)
// Code 2 is never produced.
//
// Numbers are read as strtod reads them in the "C" locale, whatever the
// process locale is. Nothing here shows a message or keeps state between
// calls; all functions may be called from any thread.
#pragma once

#include <string>
#include <string_view>

// Index (1..22) of the operator table entry equal to the whole run of
// operator characters (< > = * / % + - ^ & | \) that starts `text`; -1 when
// `text` does not start with such a run or the run is no operator ("*-",
// "=", "<<<").
int FindOperator(std::string_view text);

// Length of the operand token that starts `text`: the leading letters,
// digits and full stops, or, when there are none, the first character plus
// the letters, digits and full stops after it. 0 only for an empty text.
int OperandLength(std::string_view text);

// Converts `infix` to postfix text in `postfix` (overwritten). Returns 0, 1
// for an unbalanced parenthesis, 3 for an empty operand, or 4 when an
// exception was raised; on a non-zero code `postfix` holds what was
// converted before the fault.
int ConvertToPostfix(std::string_view infix, std::string& postfix);

// Evaluates postfix text. Returns 0 or 4 after running to the end, and then
// writes the last value computed to `value` (with 4 when more values were
// left); returns 1 or 3 (or 4 for a failing operator or an exception)
// without touching `value`.
int EvaluatePostfix(std::string_view postfix, double& value);

// ConvertToPostfix, then EvaluatePostfix. Returns the first non-zero code;
// `value` is written only as EvaluatePostfix writes it. An exception during
// the conversion gives 4; one during the evaluation gives 0 with `value`
// left as it was (kept deliberately: callers format whatever they held).
int EvaluateExpression(std::string_view text, double& value);
