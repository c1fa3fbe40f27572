#include "cli/terminal_linux/PlainLineEditor.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kestra::cli {

LineInput CPlainLineEditor::Read(const std::string& prompt) {
  m_mode.ReadLines();
  m_mode.TakeInterrupt();
  std::fputs(prompt.c_str(), m_pOut);
  std::fflush(m_pOut);
  LineInput input;
  for (;;) {
    const size_t end = m_read.find('\n');
    if (end != std::string::npos) {
      input = {LineInput::End::Line, m_read.substr(0, end)};
      m_read.erase(0, end + 1);
      break;
    }
    char buffer[4096];
    const ssize_t count = read(STDIN_FILENO, buffer, sizeof(buffer));
    if (count > 0) {
      m_read.append(buffer, static_cast<size_t>(count));
      continue;
    }
    const int error = count < 0 ? errno : 0;
    if (error == EAGAIN) CTerminalMode::HasInput(-1);
    const bool isInterrupted = m_mode.TakeInterrupt();
    if ((error == EINTR || error == EAGAIN) && !isInterrupted) continue;
    input.text = std::exchange(m_read, {});
    if (isInterrupted) {
      input.end = LineInput::End::Interrupted;
    } else if (!input.text.empty()) {
      input.end = LineInput::End::Line;
    }
    std::fputc('\n', m_pOut);
    break;
  }
  m_mode.KeepInput();
  return input;
}

bool CPlainLineEditor::HasPendingInput() {
  return !m_read.empty() || CTerminalMode::HasInput(0);
}

}  // namespace kestra::cli
