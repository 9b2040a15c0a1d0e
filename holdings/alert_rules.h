// The custom column alert rules: one table for the whole module, keyed by
// the custom column's name, read from and written to UserSetting.ini
// through settings/custom_alert.h, and the checks the rule dialog's
// "Update" and "Delete" make before they change it.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "settings/custom_alert.h"

namespace vh {

// The two comparisons, in the order the rule dialog lists them. Stored in
// rules verbatim; any other text never matches.
inline constexpr const char* kLessOrEqual = "less than or equal to";
inline constexpr const char* kGreaterOrEqual = "greater than or equal to";
inline constexpr const char* kAlertComparisons[] = {kLessOrEqual, kGreaterOrEqual};

inline constexpr const char* kSelectColumnMessage = "Please select a custom column";
inline constexpr const char* kSelectExpressionMessage = "Please select a expression";
inline constexpr const char* kEnterValueMessage = "Please enter some value";

// What "Update" reads from the dialog: the selected texts of the column
// name list, the hidden column number list and the comparison list
// (nullopt: nothing selected), and the threshold as typed.
struct AlertRuleInput {
  std::optional<std::string> columnName;
  std::optional<std::string> columnNumber;
  std::optional<std::string> comparison;
  std::string threshold;
};

// The rule `input` describes: field 1 comparison, 2 and 4 the column name,
// 3 the threshold, 5 the column number. nullopt after showing the first
// failing check's message (column, number, comparison, then an empty
// threshold; the number and the comparison share one text).
std::optional<CustomAlert> RuleFromInput(const AlertRuleInput& input);

class CAlertRuleTable {
public:
  // The rule of `name`. The first load after start always reads the
  // settings file; later ones take the table's rule and read the file only
  // when the table has none. A rule read from the file is entered in the
  // table. Null when neither has one (missing file or key, deleted rule).
  const CustomAlert* Load(const std::string& name);
  // Loads every name in `names` (the view's set-up: rules then fire after a
  // restart without the dialog being opened).
  void LoadAll(const std::vector<std::string>& names);
  // The table's rule of `name`, or null; the file is not read.
  const CustomAlert* Find(const std::string& name) const;
  // Enters `rule` under its column name (field 2), overwriting the fields of
  // a rule already there. Returns the table's rule.
  const CustomAlert& Put(const CustomAlert& rule);
  // Removes the rule of `name` and writes its key with a single blank.
  // Returns false when the file could not be written (the table's rule is
  // gone all the same).
  bool Delete(const std::string& name);
  // Writes every rule and empties the table (plug-in shutdown). Returns
  // false when any write failed; the table is emptied all the same.
  bool SaveAll();

  bool Empty() const { return rules_.empty(); }
  size_t Size() const { return rules_.size(); }
  bool Filled() const { return filled_; }
  // Forgets every rule and the first-load mark, as at the module's start.
  void Reset();

private:
  std::map<std::string, CustomAlert> rules_;
  bool filled_ = false;
};

// The one table of the module.
CAlertRuleTable& ModuleAlertRules();

} // namespace vh
