// Where an export goes when its caller names no file.
//
// Folder: the user's documents folder, XDG_DOCUMENTS_DIR from
// "$XDG_CONFIG_HOME/user-dirs.dirs" (default "~/.config/user-dirs.dirs")
// when it names an existing folder; else "~/Documents" when it exists; else
// the home folder itself.
//
// Name: "<stem>_<YYYYMMDD_HHMMSS>.xlsx" in local time, the stem made from the
// base name (SafeFileStem). When that file exists already, "_2", "_3", ...
// is added before ".xlsx", so an export never replaces an earlier one.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace vh {

// The stem used when the base name leaves nothing usable.
inline constexpr std::string_view kDefaultExportStem = "export";
// Longest stem kept, in bytes.
inline constexpr size_t kMaxExportStemBytes = 100;

// `name` with every byte a file name may not hold on Linux, Windows or macOS
// ( / \ : * ? " < > | and control characters) replaced by "_", leading and
// trailing blanks and dots removed, cut to kMaxExportStemBytes on a UTF-8
// character boundary; kDefaultExportStem when nothing is left.
std::string SafeFileStem(std::string_view name);

// The documents folder for the given home and configuration folders
// (`configHome` empty means "<home>/.config"). Never empty when `home` is
// not; returns `home` when neither documents folder exists.
std::string DocumentsFolderFor(const std::string& home, const std::string& configHome);

// The same for the current user: HOME (or the password database), and
// XDG_CONFIG_HOME. Returns "." when no home folder can be found.
std::string DocumentsFolder();

// "<folder>/<stem>_<stamp>[_n].xlsx" for `when`, choosing the first name
// that does not exist yet (n up to 999, then the last one is returned).
std::string DefaultExportPath(const std::string& folder, std::string_view baseName,
                              std::time_t when);

} // namespace vh
