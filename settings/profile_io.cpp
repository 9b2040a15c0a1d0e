#include "settings/profile_io.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace profile::detail {
namespace {

WriteFunction g_write = nullptr;

class Fd {
public:
  explicit Fd(int fd) : fd_(fd) {}
  ~Fd() {
    if (fd_ >= 0)
      ::close(fd_);
  }
  Fd(const Fd&) = delete;
  Fd& operator=(const Fd&) = delete;
  int get() const { return fd_; }
  // Closes now and reports whether the close succeeded: on some file
  // systems a late write error shows only here.
  bool close() {
    const int fd = fd_;
    fd_ = -1;
    return ::close(fd) == 0;
  }

private:
  int fd_;
};

bool WriteAll(int fd, const std::string& content) {
  const char* p = content.data();
  size_t left = content.size();
  while (left > 0) {
    const ssize_t n = g_write ? g_write(fd, p, left) : ::write(fd, p, left);
    if (n < 0 && errno == EINTR)
      continue;
    if (n <= 0)
      return false;
    p += n;
    left -= static_cast<size_t>(n);
  }
  return true;
}

std::string DirectoryOf(const std::string& path) {
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos)
    return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

void SyncDirectory(const std::string& path) {
  Fd dir(::open(DirectoryOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (dir.get() >= 0)
    ::fsync(dir.get()); // best effort: the rename itself already happened
}

} // namespace

ReadStatus ReadWholeFile(const std::string& path, std::string& out) {
  out.clear();
  Fd fd(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  if (fd.get() < 0)
    return errno == ENOENT || errno == ENOTDIR ? ReadStatus::Missing : ReadStatus::Failed;
  struct stat st {};
  if (::fstat(fd.get(), &st) != 0)
    return ReadStatus::Failed;
  if (!S_ISREG(st.st_mode))
    return ReadStatus::NotAFile;
  out.reserve(static_cast<size_t>(st.st_size));
  char chunk[65536];
  for (;;) {
    const ssize_t n = ::read(fd.get(), chunk, sizeof chunk);
    if (n < 0 && errno == EINTR)
      continue;
    if (n < 0) {
      out.clear();
      return ReadStatus::Failed;
    }
    if (n == 0)
      return ReadStatus::Ok;
    out.append(chunk, static_cast<size_t>(n));
  }
}

bool ReplaceFile(const std::string& path, const std::string& content) {
  mode_t mode = 0644;
  struct stat st {};
  if (::stat(path.c_str(), &st) == 0) {
    if (!S_ISREG(st.st_mode) || (st.st_mode & 0222) == 0)
      return false;
    mode = st.st_mode & 07777;
  }
  std::string temp = path + ".tmpXXXXXX";
  Fd fd(::mkstemp(temp.data()));
  if (fd.get() < 0)
    return false;
  const bool written = ::fchmod(fd.get(), mode) == 0 && WriteAll(fd.get(), content) &&
                       ::fsync(fd.get()) == 0 && fd.close();
  if (!written || ::rename(temp.c_str(), path.c_str()) != 0) {
    ::unlink(temp.c_str());
    return false;
  }
  SyncDirectory(path);
  return true;
}

WriteFunction SetWriteFunctionForTesting(WriteFunction fn) {
  WriteFunction old = g_write;
  g_write = fn;
  return old;
}

} // namespace profile::detail
