#include "settings/profile.h"

#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "settings/ini_text.h"
#include "settings/profile_buffer.h"
#include "settings/profile_io.h"

namespace profile {
namespace detail {

uint32_t CopyValue(std::string_view value, char* buffer, uint32_t size) {
  const size_t n = value.size() < size ? value.size() : size - 1;
  if (n > 0) // an empty view may carry no pointer at all
    std::memcpy(buffer, value.data(), n);
  buffer[n] = '\0';
  return static_cast<uint32_t>(n);
}

uint32_t CopyList(const std::vector<std::string_view>& names, char* buffer, uint32_t size) {
  std::string list;
  for (std::string_view name : names)
    list.append(name).push_back('\0');
  if (list.size() + 1 <= size) {
    std::memcpy(buffer, list.data(), list.size());
    buffer[list.size()] = '\0';
    if (list.empty() && size >= 2)
      buffer[1] = '\0';
    return static_cast<uint32_t>(list.size());
  }
  if (size < 2) {
    buffer[0] = '\0';
    return 0;
  }
  std::memcpy(buffer, list.data(), size - 2);
  buffer[size - 2] = '\0';
  buffer[size - 1] = '\0';
  return size - 2;
}

} // namespace detail

namespace {

using namespace profile::detail;

std::string_view DefaultOf(const char* defaultValue) {
  std::string_view d = defaultValue ? defaultValue : "";
  while (!d.empty() && d.back() == ' ')
    d.remove_suffix(1);
  return d;
}

bool HasLineBreak(const char* s) {
  return s && std::strpbrk(s, "\r\n") != nullptr;
}

} // namespace

uint32_t GetPrivateProfileStringA(const char* section, const char* key, const char* defaultValue,
                                  char* buffer, uint32_t size, const char* fileName) {
  if (!buffer || size == 0)
    return 0;
  std::string text;
  // Unreadable files read like missing ones: the caller gets its default.
  if (!fileName || ReadWholeFile(fileName, text) != ReadStatus::Ok)
    text.clear();
  if (!section)
    return CopyList(SectionNames(text), buffer, size);
  const std::string_view sectionName = TrimCallerName(section);
  if (!key)
    return CopyList(KeyNames(text, sectionName), buffer, size);
  const auto value = FindValue(text, sectionName, TrimCallerName(key));
  return CopyValue(value ? *value : DefaultOf(defaultValue), buffer, size);
}

int WritePrivateProfileStringA(const char* section, const char* key, const char* value,
                               const char* fileName) {
  if (!section || !fileName || HasLineBreak(section) || HasLineBreak(key) || HasLineBreak(value))
    return 0;
  const std::string_view sectionName = TrimCallerName(section);
  const std::string_view keyName = key ? TrimCallerName(key) : std::string_view();
  // A comment key writes a comment line, which no read ever finds again.
  const bool commentKey = key && IsCommentKey(keyName);
  if (!IsFindableSection(sectionName) || (key && !commentKey && !IsFindableKey(keyName)))
    return 0;
  std::string text;
  const ReadStatus status = ReadWholeFile(fileName, text);
  if (status != ReadStatus::Ok && status != ReadStatus::Missing)
    return 0;
  std::string updated;
  if (!key)
    updated = DeleteSection(text, sectionName);
  else if (!value)
    updated = commentKey ? text : DeleteKey(text, sectionName, keyName);
  else
    updated = SetValue(text, sectionName, keyName, value);
  if (status == ReadStatus::Ok && updated == text)
    return 1;
  return ReplaceFile(fileName, updated) ? 1 : 0;
}

} // namespace profile
