// How the reader fills a caller's buffer: a value cut to size-1 bytes, or a
// NUL-separated list cut to size-2 bytes and closed with two NULs. Private to
// settings/; exposed so that the fuzz target can drive it without files.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

namespace profile::detail {

// `buffer` holds at least `size` >= 1 bytes. Return the bytes copied, NUL
// excluded.
uint32_t CopyValue(std::string_view value, char* buffer, uint32_t size);
uint32_t CopyList(const std::vector<std::string_view>& names, char* buffer, uint32_t size);

} // namespace profile::detail
