// The password of a headless run, from a file only its owner may read.
#pragma once

#include <optional>
#include <string>

namespace host {

// The first line of `path` (without its line end). nullopt with *error when
// the file cannot be read, is not owned by this user, may be read or written
// by anyone else (group or other bits set), or its first line is empty.
std::optional<std::string> ReadPasswordFile(const std::string& path, std::string* error);

} // namespace host
