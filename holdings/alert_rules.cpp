#include "holdings/alert_rules.h"

#include "common/message.h"

namespace vh {

std::optional<CustomAlert> RuleFromInput(const AlertRuleInput& input) {
  const char* failure = nullptr;
  if (!input.columnName)
    failure = kSelectColumnMessage;
  else if (!input.columnNumber || !input.comparison)
    failure = kSelectExpressionMessage;
  else if (input.threshold.empty())
    failure = kEnterValueMessage;
  if (failure) {
    ShowMessage(failure);
    return std::nullopt;
  }
  CustomAlert rule;
  rule.field1 = *input.comparison;
  rule.field2 = *input.columnName;
  rule.field3 = input.threshold;
  rule.field4 = *input.columnName;
  rule.field5 = *input.columnNumber;
  return rule;
}

const CustomAlert* CAlertRuleTable::Load(const std::string& name) {
  const CustomAlert* found = filled_ ? Find(name) : nullptr;
  if (!found) {
    if (auto read = ReadAlertRule(name))
      found = &(rules_[name] = std::move(*read));
  }
  filled_ = true;
  return found;
}

void CAlertRuleTable::LoadAll(const std::vector<std::string>& names) {
  for (const std::string& name : names)
    (void)Load(name);
}

const CustomAlert* CAlertRuleTable::Find(const std::string& name) const {
  const auto it = rules_.find(name);
  return it == rules_.end() ? nullptr : &it->second;
}

const CustomAlert& CAlertRuleTable::Put(const CustomAlert& rule) {
  return rules_[rule.field2] = rule;
}

bool CAlertRuleTable::Delete(const std::string& name) {
  rules_.erase(name);
  return DeleteAlertRule(name);
}

bool CAlertRuleTable::SaveAll() {
  bool ok = true;
  for (const auto& [name, rule] : rules_)
    ok = WriteAlertRule(name, rule) && ok;
  rules_.clear();
  return ok;
}

void CAlertRuleTable::Reset() {
  rules_.clear();
  filled_ = false;
}

CAlertRuleTable& ModuleAlertRules() {
  static CAlertRuleTable table;
  return table;
}

} // namespace vh
