#include <cinttypes>
#include <cstdlib>

#include "VLib/src/log/Log.h"
#include "VLib/src/text/Text.h"
#include "platform/base/Once.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

std::string FileName(const std::string& path) {
  return path.substr(path.find_last_of(os::PathSeparator() == '\\' ? "\\/" : "/") + 1);
}

// The name of a file without what follows its last dot. A shared object is cut at ".so", since its
// version stands behind: libkestra.so.0 gives "libkestra".
std::string FileTitle(const std::string& path) {
  const std::string name = FileName(path);
  const size_t extension = name.find(".so");
  const size_t behind = extension + 3;
  if (extension != std::string::npos && (behind == name.size() || name[behind] == '.'))
    return name.substr(0, extension);
  return name.substr(0, name.rfind('.'));
}

void OpenOnce(const std::string& directory) {
  const std::string path = os::LibraryPath();
  const std::string executable = os::ExecutablePath();
  CVLog& log = GlobalLog();
  log.Open(directory, FileTitle(path) + "_" + FileTitle(executable));
  // The log itself stays, for threads that still run while the process ends.
  std::atexit([] { GlobalLog().CloseAtExit(); });
  log.Info("kestra loaded - module info: load_address=0x%08" PRIXPTR ", path=%s, executable=%s",
           os::LibraryLoadAddress(), path.c_str(), executable.c_str());
}

}  // namespace

CVLog& GlobalLog() {
  static auto* const pLog = new CVLog;
  return *pLog;
}

void OpenGlobalLog(const std::string& directory) {
  static COnce once;
  once.Do([&] { OpenOnce(directory); });
}

}  // namespace kestra
