// CPlainLineEditor: lines as the terminal itself lets them be typed.
#pragma once

#include "cli/shell/input/LineEditor.h"
#include "cli/terminal_linux/TerminalMode.h"

namespace kestra::cli {

class CPlainLineEditor final : public CLineEditor {
 public:
  // out is where prompts go.
  explicit CPlainLineEditor(std::FILE* out) : m_pOut(out) {}

  LineInput Read(const std::string& prompt) override;
  void AddHistory(const std::string&) override {}
  bool HasPendingInput() override;

 private:
  bool TakeLine(LineInput& input);

  std::FILE* m_pOut;
  CTerminalMode m_mode;
  std::string m_read;  // behind the last line
};

}  // namespace kestra::cli
