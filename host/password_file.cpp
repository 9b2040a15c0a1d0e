#include "host/password_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace host {

std::optional<std::string> ReadPasswordFile(const std::string& path, std::string* error) {
  // The checks are made on the descriptor that is read, not on the name.
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
  if (fd < 0) {
    *error = path + ": " + std::strerror(errno);
    return std::nullopt;
  }
  struct stat st {};
  std::string text;
  if (fstat(fd, &st) != 0) {
    *error = path + ": " + std::strerror(errno);
  } else if (!S_ISREG(st.st_mode)) {
    *error = path + ": not a regular file";
  } else if (st.st_uid != geteuid()) {
    *error = path + ": not owned by this user";
  } else if (st.st_mode & (S_IRWXG | S_IRWXO)) {
    *error = path + ": others may read or write it; make it readable only by its owner"
                    " (chmod 600)";
  } else {
    char buf[4096];
    ssize_t n;
    while (text.find('\n') == std::string::npos && (n = read(fd, buf, sizeof buf)) > 0)
      text.append(buf, static_cast<size_t>(n));
    text = text.substr(0, text.find('\n'));
    if (!text.empty() && text.back() == '\r')
      text.pop_back();
    if (text.empty())
      *error = path + ": no password on its first line";
  }
  close(fd);
  if (!error->empty() || text.empty())
    return std::nullopt;
  return text;
}

} // namespace host
