// Looks up a function that the host executable exports, by name, at the
// moment of use. Host services are never linked: a host that lacks one must
// be detectable, and the plug-in reacts with the message its caller gives.
#pragma once

namespace vh {

// Address of the symbol `name` exported by the process's main executable
// (dlsym on the main program's handle on POSIX, GetProcAddress on the main
// module on Windows), or nullptr when the host does not export it.
void* HostProc(const char* name);

// Typed convenience: HostProcAs<int (*)(const char*)>("pu_...").
template <typename Fn> Fn HostProcAs(const char* name) {
  return reinterpret_cast<Fn>(HostProc(name));
}

// The full path of the process's main executable, or an empty string.
// Qt-free code needs it before any QCoreApplication may exist.
const char* HostExecutablePath();

} // namespace vh
