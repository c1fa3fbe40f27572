#include "tests/support/win32/ChildProcess.h"

#include <stdexcept>

#include "platform/win32/base/Wide.h"
#include "tests/support/Peer.h"

namespace kestra::test {

CChildProcess::CChildProcess(const std::string& path, const std::vector<std::string>& arguments) {
  std::string commandLine = "\"" + path + "\"";
  for (size_t i = 1; i < arguments.size(); ++i) commandLine += " \"" + arguments[i] + "\"";
  std::wstring command = Wide(commandLine);
  STARTUPINFOW startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION started{};
  if (!CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &started))
    throw std::runtime_error("cannot start " + path);
  m_process = CUniqueHandle(started.hProcess);
  const CUniqueHandle thread(started.hThread);
}

CChildProcess::~CChildProcess() {
  TerminateProcess(m_process.get(), 1);
  WaitForSingleObject(m_process.get(), 10'000);
}

std::shared_ptr<void> StartPeer(const std::string& path,
                                const std::vector<std::string>& arguments) {
  std::vector<std::string> words{path};
  words.insert(words.end(), arguments.begin(), arguments.end());
  return std::make_shared<CChildProcess>(path, words);
}

}  // namespace kestra::test
