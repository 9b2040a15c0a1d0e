// Any bytes as an INI file: classify, look up, enumerate and edit it. After
// setting a key under names the writer accepts, reading it back must give the
// value as the reader presents it (blanks trimmed, one pair of outer quotes
// removed), whatever the file held before.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>
#include <vector>

#include "settings/ini_text.h"
#include "settings/profile_buffer.h"

namespace {

using namespace profile::detail;

// What the C interface can carry and the writer accepts in a line.
bool HasBreak(std::string_view s) {
  return s.find_first_of(std::string_view("\r\n\0", 3)) != std::string_view::npos;
}

std::string AsRead(std::string v) {
  const char* blanks = " \t\v";
  const size_t first = v.find_first_not_of(blanks);
  if (first == std::string::npos)
    return "";
  v = v.substr(first, v.find_last_not_of(blanks) - first + 1);
  if (v.size() >= 2 && v.front() == v.back() && (v.front() == '"' || v.front() == '\''))
    v = v.substr(1, v.size() - 2);
  return v;
}

// The buffer is exactly `size` bytes, so a copy past it trips ASan.
void CopyInto(std::string_view value, const std::vector<std::string_view>& names, uint32_t size) {
  std::vector<char> buf(size);
  const uint32_t n = CopyValue(value, buf.data(), size);
  if (n > size - 1 || buf[n] != '\0' || std::string_view(buf.data(), n) != value.substr(0, n))
    std::abort();
  const uint32_t listed = CopyList(names, buf.data(), size);
  if (listed + 1 > size || buf[listed] != '\0')
    std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider in(data, size);
  const std::string rawSection = in.ConsumeRandomLengthString(16);
  const std::string rawKey = in.ConsumeRandomLengthString(16);
  const std::string_view section = TrimCallerName(rawSection);
  const std::string_view key = TrimCallerName(rawKey);
  const std::string value = in.ConsumeRandomLengthString(32);
  const uint32_t bufferSize = in.ConsumeIntegralInRange<uint32_t>(1, 300);
  const std::string text = in.ConsumeRemainingBytesAsString();

  const auto found = FindValue(text, section, key);
  CopyInto(found ? *found : std::string_view(), SectionNames(text), bufferSize);
  CopyInto(value, KeyNames(text, section), bufferSize);
  if (HasBreak(section) || HasBreak(key) || HasBreak(value))
    return 0;

  const std::string updated = SetValue(text, section, key, value);
  if (IsFindableSection(section) && IsFindableKey(key)) {
    const auto back = FindValue(updated, section, key);
    if (!back || std::string(*back) != AsRead(value))
      std::abort();
  }
  (void)DeleteKey(updated, section, key);
  (void)DeleteSection(updated, section);
  return 0;
}
