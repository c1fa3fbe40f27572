// CShellOutput: the output of one job of the shell, which ends where the job is cancelled.
#pragma once

#include "cli/Interrupt.h"
#include "cli/render/Output.h"
#include "cli/shell/ShellCore.h"

namespace kestra::cli {

// Write and Flush throw CCancelled too. What the interrupt key finds not written yet is dropped.
class CShellOutput final : public COutput {
 public:
  CShellOutput(const ShellTarget& target, const CCancellation& cancellation)
      : m_target(target),
        m_cancellation(cancellation),
        m_output(target.file.get(), target.name, target.isTerminal) {}

  void Write(std::string_view text) override {
    Look();
    m_hasContent = true;
    m_output.Write(text);
  }
  void Flush() override {
    if (!m_hasContent) return;
    Look();
    m_output.Flush();
    m_hasContent = false;
  }
  bool IsTerminal() const override { return m_output.IsTerminal(); }

 private:
  void Look() const {
    if (m_cancellation.WasCancelled()) throw CCancelled();
  }

  const ShellTarget m_target;
  const CCancellation& m_cancellation;
  CFileOutput m_output;
  bool m_hasContent = false;  // that is not flushed
};

}  // namespace kestra::cli
