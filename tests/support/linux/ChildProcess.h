// A real child process of the test.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace kestra::test {

class CChildProcess {
 public:
  // Runs the program at path with the arguments given, the first of which is its name.
  CChildProcess(const std::string& path, const std::vector<std::string>& arguments);
  // Kills it if it still runs.
  ~CChildProcess();
  CChildProcess(const CChildProcess&) = delete;
  CChildProcess& operator=(const CChildProcess&) = delete;

  uint32_t Pid() const { return static_cast<uint32_t>(m_pid); }
  // Waits until it has replaced the image of the test, so that /proc tells of the program.
  void AwaitExec() const;
  // Lets the system forget an ended child; until then it is a zombie.
  void Reap();

 private:
  pid_t m_pid = -1;
};

// Runs body in a forked child and answers what it returned as the child's exit status, -1 if the
// child did not get there.
int RunInChild(const std::function<int()>& body);

// The same in a child that can open no descriptor more. The preset with sanitizers cannot do that:
// one of them looks at objects through pipes.
#ifdef __SANITIZE_ADDRESS__
inline constexpr bool kCanRunWithoutDescriptors = false;
#else
inline constexpr bool kCanRunWithoutDescriptors = true;
#endif
int RunWithoutDescriptors(const std::function<int()>& body);

bool IsRoot();

// Runs body in a forked child as a user without rights ("nobody") and answers whether it returned
// true. As an ordinary user already, the child stays what it is.
bool RunAsOrdinaryUser(const std::function<bool()>& body);

}  // namespace kestra::test
