// A real child process of the test.
#pragma once

#include <string>
#include <vector>

#include "platform/win32/base/UniqueHandle.h"

namespace kestra::test {

class CChildProcess {
 public:
  // Runs the program at path with the arguments given, the first of which stands for its name.
  CChildProcess(const std::string& path, const std::vector<std::string>& arguments);
  // Kills it if it still runs, and waits until it is gone.
  ~CChildProcess();
  CChildProcess(const CChildProcess&) = delete;
  CChildProcess& operator=(const CChildProcess&) = delete;

  uint32_t Pid() const { return GetProcessId(m_process.get()); }

 private:
  CUniqueHandle m_process;
};

}  // namespace kestra::test
