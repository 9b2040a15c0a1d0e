// File access under profile.h: whole-file reads, and replacement of a file
// that never leaves it torn. Private to settings/ and its tests.
#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>

namespace profile::detail {

enum class ReadStatus { Ok, Missing, NotAFile, Failed };

// Reads the whole regular file at `path` into `out`. Missing when there is
// no such file, NotAFile for a directory or device, Failed on an I/O error;
// `out` is empty unless the result is Ok.
ReadStatus ReadWholeFile(const std::string& path, std::string& out);

// Replaces (or creates) `path` with `content`: the bytes go to a temporary
// file beside it, which is flushed to disk and renamed over `path`, so a
// crash or a full disk leaves either the old file or the new one, whole.
// Refuses a target that is not a regular file or that has no write
// permission bit at all (the rename would otherwise bypass it). Returns
// false on any failure, with `path` untouched and no temporary file left.
bool ReplaceFile(const std::string& path, const std::string& content);

// The write(2) the replacement uses; tests install one that fails part-way.
// nullptr restores the real one. Returns the previous function.
using WriteFunction = ssize_t (*)(int fd, const void* data, size_t size);
WriteFunction SetWriteFunctionForTesting(WriteFunction fn);

} // namespace profile::detail
