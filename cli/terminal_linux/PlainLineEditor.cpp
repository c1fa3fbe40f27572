#include "cli/terminal_linux/PlainLineEditor.h"

#include <unistd.h>

#include <cerrno>
#include <utility>

namespace kestra::cli {

// A whole line out of what was read. An end key that was typed ahead ends the input where it stands
// first in a line; elsewhere it is nothing.
bool CPlainLineEditor::TakeLine(LineInput& input) {
  const char stops[] = {'\n', CTerminalMode::EndKey()};
  for (;;) {
    const size_t stop = m_read.find_first_of(stops, 0, sizeof(stops));
    if (stop == std::string::npos) return false;
    const bool isLine = m_read[stop] == '\n';
    if (isLine) input = {LineInput::End::Line, m_read.substr(0, stop)};
    m_read.erase(isLine || stop == 0 ? 0 : stop, isLine ? stop + 1 : 1);
    if (isLine || stop == 0) return true;
  }
}

LineInput CPlainLineEditor::Read(const std::string& prompt) {
  m_mode.ReadLines();
  m_mode.TakeInterrupt();
  std::fputs(prompt.c_str(), m_pOut);
  std::fflush(m_pOut);
  LineInput input;
  while (!TakeLine(input)) {
    const bool hasInput = CTerminalMode::AwaitInput();
    const bool isInterrupted = m_mode.TakeInterrupt();
    char buffer[4096];
    const ssize_t count =
        hasInput && !isInterrupted ? read(STDIN_FILENO, buffer, sizeof(buffer)) : -1;
    if (count > 0) {
      m_read.append(buffer, static_cast<size_t>(count));
      continue;
    }
    if (!isInterrupted && (!hasInput || (count < 0 && (errno == EINTR || errno == EAGAIN))))
      continue;
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
  return !m_read.empty() || CTerminalMode::HasInput();
}

}  // namespace kestra::cli
