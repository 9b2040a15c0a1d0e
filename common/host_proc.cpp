#include "common/host_proc.h"

#include <string>

#if defined(_WIN32)
#include <windows.h>
#else
#include <climits>
#include <dlfcn.h>
#include <unistd.h>
#endif

namespace vh {

void* HostProc(const char* name) {
#if defined(_WIN32)
  return reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA(nullptr), name));
#else
  // dlopen(nullptr) is the main program; its dynamic symbol table holds what
  // the host exported (it links with ENABLE_EXPORTS). Never RTLD_DEFAULT: that
  // would also find the plug-in's own or any library's symbol of that name.
  static void* self = dlopen(nullptr, RTLD_LAZY);
  if (!self || !name)
    return nullptr;
  return dlsym(self, name);
#endif
}

const char* HostExecutablePath() {
  static const std::string path = [] {
#if defined(_WIN32)
    char buf[MAX_PATH] = {};
    DWORD n = GetModuleFileNameA(nullptr, buf, MAX_PATH);
    return std::string(buf, n);
#else
    char buf[PATH_MAX] = {};
    ssize_t n = readlink("/proc/self/exe", buf, sizeof buf - 1);
    return n > 0 ? std::string(buf, static_cast<size_t>(n)) : std::string();
#endif
  }();
  return path.c_str();
}

} // namespace vh
