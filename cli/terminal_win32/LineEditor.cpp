// The console edits lines by itself, and keeps its own history of them.
#include "cli/shell/input/LineEditor.h"

#include <windows.h>

#include <cstdio>

#include "cli/terminal_win32/Text.h"

namespace kestra::cli {
namespace {

BOOL WINAPI TakeInterrupt(DWORD control) {
  return control == CTRL_C_EVENT ? TRUE : FALSE;
}

constexpr wchar_t kEndOfInput = 0x1A;  // Ctrl-Z

class CConsoleLineEditor final : public CLineEditor {
 public:
  CConsoleLineEditor() { SetConsoleCtrlHandler(TakeInterrupt, TRUE); }
  ~CConsoleLineEditor() override { SetConsoleCtrlHandler(TakeInterrupt, FALSE); }

  LineInput Read(const std::string& prompt) override {
    std::fputs(prompt.c_str(), stdout);
    std::fflush(stdout);
    std::wstring line;
    while (!line.ends_with(L'\n')) {
      wchar_t buffer[1024];
      DWORD count = 0;
      SetLastError(ERROR_SUCCESS);
      const bool isRead = ReadConsoleW(m_input, buffer, 1024, &count, nullptr) != 0;
      if (!isRead || count == 0) return WithoutLine(Utf8(line));
      line.append(buffer, count);
    }
    while (line.ends_with(L'\n') || line.ends_with(L'\r')) line.pop_back();
    if (line.starts_with(kEndOfInput)) return {};
    return {LineInput::End::Line, Utf8(line)};
  }

  void AddHistory(const std::string&) override {}

  bool HasPendingInput() override { return false; }

 private:
  // The interrupt key ends a reading with that error.
  static LineInput WithoutLine(std::string typed) {
    const bool isInterrupted = GetLastError() == ERROR_OPERATION_ABORTED;
    std::fputc('\n', stdout);
    if (isInterrupted) return {LineInput::End::Interrupted, std::move(typed)};
    return {typed.empty() ? LineInput::End::EndOfInput : LineInput::End::Line, std::move(typed)};
  }

  static std::string Utf8(const std::wstring& text) { return Narrow(text.c_str()); }

  const HANDLE m_input = GetStdHandle(STD_INPUT_HANDLE);
};

}  // namespace

std::unique_ptr<CLineEditor> MakeLineEditor(Completer) {
  return std::make_unique<CConsoleLineEditor>();
}

}  // namespace kestra::cli
