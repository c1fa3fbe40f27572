#include "platform/os/process/ChildProcess.h"

#include <objbase.h>
#include <shellapi.h>

#include "platform/os/Apartment.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/os/NativeHandle.h"

namespace kestra::os {
namespace {

// Of the Win32 page CreateProcess, with the end.
constexpr size_t kMostCommandCharacters = 32'767;

class CWinChild final : public CChildProcess {
 public:
  CWinChild(CUniqueHandle process, uint32_t id) : m_process(std::move(process)), m_id(id) {}

  NativeHandle Native() const override { return NativeOf(m_process.get()); }
  uint32_t Id() const override { return m_id; }
  // The number that stands for a process that runs may also be what one has ended with.
  SystemError ExitCode(uint32_t& exitCode) override {
    DWORD code = 0;
    if (WaitForSingleObject(m_process.get(), 0) != WAIT_OBJECT_0) return kErrorNotReady;
    if (!GetExitCodeProcess(m_process.get(), &code)) return LastError();
    exitCode = code;
    return kErrorSuccess;
  }

 private:
  CUniqueHandle m_process;
  uint32_t m_id;
};

// Without the bits that promise a field which is not filled here: the shell would follow it.
uint32_t UsableMask(uint32_t shellMask) {
  constexpr uint32_t kClass = SEE_MASK_CLASSNAME | SEE_MASK_CLASSKEY;
  constexpr uint32_t kIcon = 0x10;               // SEE_MASK_ICON, of systems before Vista
  constexpr uint32_t kFileAndUrl = 0x400000;     // SEE_MASK_FILEANDURL
  constexpr uint32_t kHinstIsSite = 0x08000000;  // SEE_MASK_FLAG_HINST_IS_SITE
  constexpr uint32_t kOtherFields =
      kIcon | SEE_MASK_HOTKEY | SEE_MASK_HMONITOR | kFileAndUrl | kHinstIsSite;
  uint32_t mask = shellMask & ~(kClass | kOtherFields);
  // Alone it names a list of ids; with the other bit of SEE_MASK_INVOKEIDLIST the shell makes one.
  if ((mask & SEE_MASK_INVOKEIDLIST) == SEE_MASK_IDLIST) mask &= ~uint32_t{SEE_MASK_IDLIST};
  // The calling thread may have no message loop, and may end at once.
  return mask | SEE_MASK_NOCLOSEPROCESS | SEE_MASK_NOASYNC;
}

const wchar_t* OrNull(const std::wstring& text) {
  return text.empty() ? nullptr : text.c_str();
}

bool WideNames(std::initializer_list<std::pair<const std::string&, std::wstring&>> names) {
  for (const auto& [utf8, wide] : names) {
    if (WideName(utf8, wide) != kErrorSuccess) return false;
  }
  return true;
}

}  // namespace

// No name has a quote in it, which would end the word too soon and have another program started;
// nor has any name what stands in its place.
std::string QuotedProgram(const std::string& program) {
  std::string quoted = "\"";
  for (const char c : program) quoted += c == '"' ? '?' : c;
  return quoted + '"';
}

SystemError StartChild(const std::string& commandLine, const std::string& directory,
                       const ChildWindow& window, std::unique_ptr<CChildProcess>& child) {
  std::wstring command;
  std::wstring folder;
  if (!WideNames({{commandLine, command}, {directory, folder}})) return kErrorBadArguments;
  const bool hasWord = command.find_first_not_of(L" \t") != std::wstring::npos;
  if (!hasWord || command.size() >= kMostCommandCharacters) return kErrorBadArguments;
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESHOWWINDOW;
  startup.wShowWindow = static_cast<WORD>(window.showWindow);
  PROCESS_INFORMATION started{};
  // The system writes into the command line while it takes it apart.
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE,
                      window.isHidden ? CREATE_NO_WINDOW : 0, nullptr, OrNull(folder), &startup,
                      &started))
    return LastError();
  const CUniqueHandle thread(started.hThread);
  child = std::make_unique<CWinChild>(CUniqueHandle(started.hProcess), started.dwProcessId);
  return kErrorSuccess;
}

SystemError OpenByShell(const std::string& file, const std::string& arguments,
                        const std::string& directory, uint32_t shellMask, uint32_t showWindow,
                        std::unique_ptr<CChildProcess>& child) {
  std::wstring wideFile;
  std::wstring wideArguments;
  std::wstring folder;
  if (file.empty() ||
      !WideNames({{file, wideFile}, {arguments, wideArguments}, {directory, folder}}))
    return kErrorBadArguments;
  // The shell's extensions need it. A thread that has chosen another model goes on with that.
  const CApartmentScope apartment;
  SHELLEXECUTEINFOW execution{};
  execution.cbSize = sizeof execution;
  execution.fMask = UsableMask(shellMask);
  execution.lpFile = wideFile.c_str();
  execution.lpParameters = OrNull(wideArguments);
  execution.lpDirectory = OrNull(folder);
  execution.nShow = static_cast<int>(showWindow);
  if (!ShellExecuteExW(&execution)) return LastError();
  CUniqueHandle process(execution.hProcess);
  const DWORD id = process ? GetProcessId(process.get()) : 0;
  child.reset();
  if (process) child = std::make_unique<CWinChild>(std::move(process), id);
  return kErrorSuccess;
}

}  // namespace kestra::os
