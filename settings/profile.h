// Profile-string functions: reading and writing one value of an INI file,
// with the behaviour the settings files were always written and read with.
//
// File form. "[section]" lines open sections; "key=value" lines belong to the
// section above them; lines starting with ";" (after blanks) are comments;
// lines before the first section belong to none. Blanks are space, tab and
// vertical tab. Bytes are taken as they are (no encoding, no escapes).
//
// Names. Section and key names match case-insensitively (ASCII). Leading and
// trailing spaces of the names a caller passes are ignored; in the file,
// blanks around a section name inside its brackets, before a key and between
// a key and "=" are ignored. A line without "=" inside a section is a key
// with an empty value. With duplicates, the first section and, inside it,
// the first key win, for reading and for writing alike.
#pragma once

#include <cstdint>

namespace profile {

// Copies into `buffer` (of `size` bytes) the value of `key` in `section` of
// the file `fileName`:
// - the value loses its leading and trailing blanks, then, when it is wholly
//   enclosed in a matching pair of double or single quotes, that pair;
// - when the file, the section or the key is missing (or the file cannot be
//   read), `defaultValue` is copied instead, without its trailing spaces
//   (nullptr counts as "");
// - the copy is cut to `size` - 1 bytes and always NUL-terminated.
// Returns the number of bytes copied, NUL excluded (so `size` - 1 when the
// copy was cut, and 0 when `buffer` is nullptr or `size` is 0).
//
// Enumeration: with `section` nullptr, the buffer receives every section name
// of the file (duplicates included); with `key` nullptr, every key name of
// `section` (of its first occurrence). Each name ends with a NUL and the
// list with a second NUL; the default is not used. Returns the bytes copied
// without the final NUL. When the list does not fit, it is cut to `size` - 2
// bytes, followed by two NULs, and `size` - 2 is returned (0 when `size` < 2).
//
// A missing file is never created by a read.
uint32_t GetPrivateProfileStringA(const char* section, const char* key, const char* defaultValue,
                                  char* buffer, uint32_t size, const char* fileName);

// Sets `key` = `value` in `section` of the file `fileName`:
// - an existing key's line becomes "key=value" with the key spelt as in the
//   file; the value is written exactly as given (nothing trimmed or quoted);
// - a new key goes after the last key line of the section (in a section
//   without keys, after its last non-blank line);
// - a new section goes at the end of the file, as "[section]" and the key line;
// - `value` nullptr deletes the key; `key` nullptr deletes the section's header
//   and key lines (its comments stay);
// - every other line stays byte for byte; new lines take the file's line
//   break ("\r\n" or "\n", from its first line), a new file the host's ("\n"
//   on POSIX, "\r\n" on Windows); a last line without a break gets one when a
//   line is added after it;
// - a missing file is created (its directory must exist); a deletion never
//   creates one.
// The file is replaced whole through a temporary file and a rename, so a
// failure at any point leaves the old file intact.
// Returns nonzero on success and 0 on failure: `section` or `fileName`
// nullptr; a name or value containing a line break (it would split the line);
// a name the reader could never find again, which would otherwise pile up a
// new line on every write: a section with "]" or a key with "=", a key
// starting with ";" or "[", or either with a tab or vertical tab at an end;
// a file that cannot be read, that is not a regular file, that is read-only
// (no write permission bit); or any write, flush or rename error.
int WritePrivateProfileStringA(const char* section, const char* key, const char* value,
                               const char* fileName);

} // namespace profile
