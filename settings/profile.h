// Profile-string functions: reading and writing one value of an INI file,
// byte for byte as the platform's own functions read and write it, so that
// the settings files move between desks and open in the platform's editors.
//
// File form. "[section]" lines open sections; "key=value" lines belong to the
// section above them; lines starting with ";" (after blanks) are comments;
// lines before the first section belong to none. A line ends at CR LF, LF or
// a CR alone. Blanks are space, tab and vertical tab. Bytes are taken as they
// are (no encoding, no escapes).
//
// Names. Section and key names match case-insensitively (ASCII). Leading and
// trailing spaces of the names a caller passes are ignored; in the file,
// blanks around a section name inside its brackets, before a key and between
// a key and "=" are ignored. A line without "=" inside a section is no key:
// it is neither found nor listed. With duplicates, the first section and,
// inside it, the first key win, for reading and for writing alike.
//
// Where the behaviour was checked, rule by rule: the functions' reference
// pages and remarks (null section and key lists, the double NUL, the default
// and its trailing blanks, the cuts at size - 1 and size - 2, outer quotes,
// case); the knowledge-base article on quoted leading blanks; the platform's
// public conformance tests, whose checks hold on the platform itself (the
// CR LF that ends every written line, a new file's bytes, key and section
// deletion, a line without "=" not listed as a key, an empty key name, a
// deletion on an existing empty file leaving it empty); and a public
// reverse-engineering test suite run against the platform itself, with its
// write-up (which
// blanks are trimmed, bracket parsing, where ";" starts a comment, a key
// starting with ";" written as a comment line, where new keys go, comments
// kept when their section is deleted, a CR alone as a line break, a
// deletion in a missing file leaving an empty file).
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
// - a key starting with ";" writes ";key=value" as a new comment line, like
//   a new key; it is never read back, and deleting it changes nothing;
// - `value` nullptr deletes the key; `key` nullptr deletes the section's header
//   and key lines (its comments stay);
// - every line written (new or replaced) ends with "\r\n"; a last line
//   without a break gets one when it is replaced or a line is added after
//   it; every other line stays byte for byte;
// - a missing file is created (its directory must exist); a deletion in a
//   missing file leaves an empty one.
// The file is replaced whole through a temporary file and a rename, so a
// failure at any point leaves the old file intact.
// Returns nonzero on success and 0 on failure: `section` or `fileName`
// nullptr; a name or value containing a line break (it would split the line);
// a name the reader could never find again, which would otherwise pile up a
// new line on every write: a section with "]" or a key with "=", a key
// starting with "[", or either with a tab or vertical tab at an end;
// a file that cannot be read, that is not a regular file, that is read-only
// (no write permission bit); or any write, flush or rename error.
int WritePrivateProfileStringA(const char* section, const char* key, const char* value,
                               const char* fileName);

} // namespace profile
