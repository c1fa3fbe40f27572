// The console's own editing knows neither completion nor a history that lasts, so that keys are
// read one by one (ReadConsoleInput).
#include "cli/shell/input/LineEditor.h"

#include <windows.h>

#include <algorithm>
#include <utility>

#include "cli/shell/input/CompletionList.h"
#include "cli/shell/input/EditedLine.h"
#include "cli/terminal_win32/ConsoleScreen.h"
#include "cli/terminal_win32/Text.h"

namespace kestra::cli {
namespace {

// Set by an interrupt that is no key: that of another process, and Ctrl-Break stays the system's.
HANDLE g_interrupt = nullptr;

BOOL WINAPI TakeInterrupt(DWORD control) {
  if (control != CTRL_C_EVENT) return FALSE;
  if (g_interrupt) SetEvent(g_interrupt);
  return TRUE;
}

// While a line is typed the console hands out every key, the interrupt key too. What the user has
// set of the mouse stays.
class CKeyMode {
 public:
  explicit CKeyMode(HANDLE input) : m_input(input) {
    m_isKnown = GetConsoleMode(input, &m_found) != 0;
    constexpr DWORD kOff = ENABLE_LINE_INPUT | ENABLE_ECHO_INPUT | ENABLE_PROCESSED_INPUT |
                           ENABLE_MOUSE_INPUT | ENABLE_VIRTUAL_TERMINAL_INPUT;
    if (m_isKnown) SetConsoleMode(input, (m_found & ~kOff) | ENABLE_WINDOW_INPUT);
  }
  ~CKeyMode() {
    if (m_isKnown) SetConsoleMode(m_input, m_found);
  }
  CKeyMode(const CKeyMode&) = delete;
  CKeyMode& operator=(const CKeyMode&) = delete;

 private:
  const HANDLE m_input;
  DWORD m_found = 0;
  bool m_isKnown = false;
};

bool IsControlDown(const KEY_EVENT_RECORD& key) {
  return (key.dwControlKeyState & (LEFT_CTRL_PRESSED | RIGHT_CTRL_PRESSED)) != 0;
}

// A key that is pressed; a character that was put in by its number comes when Alt is let go.
bool IsTyped(const INPUT_RECORD& record) {
  if (record.EventType != KEY_EVENT) return false;
  const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
  return key.bKeyDown || (key.wVirtualKeyCode == VK_MENU && key.uChar.UnicodeChar != 0);
}

using Edit = void (CEditedLine::*)();

struct KeyEdit {
  WORD key;
  Edit edit;
  Edit withControl;
};
constexpr KeyEdit kKeys[] = {
    {VK_LEFT, &CEditedLine::GoLeft, &CEditedLine::GoWordLeft},
    {VK_RIGHT, &CEditedLine::GoRight, &CEditedLine::GoWordRight},
    {VK_HOME, &CEditedLine::GoToStart, &CEditedLine::DeleteToStart},
    {VK_END, &CEditedLine::GoToEnd, &CEditedLine::DeleteToEnd},
    {VK_UP, &CEditedLine::ShowOlder, &CEditedLine::ShowOlder},
    {VK_DOWN, &CEditedLine::ShowNewer, &CEditedLine::ShowNewer},
    {VK_BACK, &CEditedLine::DeleteBefore, &CEditedLine::DeleteWordBefore},
    {VK_DELETE, &CEditedLine::DeleteBehind, &CEditedLine::DeleteToEnd},
    {VK_F8, &CEditedLine::ShowOlderAlike, &CEditedLine::ShowOlderAlike},
    {VK_ESCAPE, &CEditedLine::Begin, &CEditedLine::Begin},
};

struct CharacterEdit {
  char letter;  // with Ctrl
  Edit edit;
};
constexpr CharacterEdit kControls[] = {
    {'A', &CEditedLine::GoToStart},        {'E', &CEditedLine::GoToEnd},
    {'B', &CEditedLine::GoLeft},           {'F', &CEditedLine::GoRight},
    {'P', &CEditedLine::ShowOlder},        {'N', &CEditedLine::ShowNewer},
    {'U', &CEditedLine::DeleteToStart},    {'K', &CEditedLine::DeleteToEnd},
    {'W', &CEditedLine::DeleteWordBefore},
};

constexpr wchar_t Control(char letter) {
  return static_cast<wchar_t>(letter - '@');
}

class CConsoleLineEditor final : public CLineEditor {
 public:
  explicit CConsoleLineEditor(Completer completer) : m_completer(std::move(completer)) {
    g_interrupt = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    SetConsoleCtrlHandler(TakeInterrupt, TRUE);
  }
  // The handler's thread may still be at it, so the event stays.
  ~CConsoleLineEditor() override { SetConsoleCtrlHandler(TakeInterrupt, FALSE); }

  LineInput Read(const std::string& prompt) override;
  void AddHistory(const std::string& entry) override { m_line.AddHistory(entry); }
  bool HasPendingInput() override;

 private:
  bool NextRecord(INPUT_RECORD& record);
  void Take(const KEY_EVENT_RECORD& key);
  bool TakeControl(wchar_t character);
  void Insert(wchar_t character);
  void InsertBlank();
  void Complete();
  void Show();
  void Finish(LineInput::End end);

  const HANDLE m_input = GetStdHandle(STD_INPUT_HANDLE);
  const Completer m_completer;
  CConsoleScreen m_screen;
  CEditedLine m_line;
  std::string m_prompt;
  wchar_t m_firstHalf = 0;  // of a character of two
  std::string m_completed;  // the line up to the blank that the completion has put in
  bool m_isDone = false;
  LineInput::End m_end = LineInput::End::EndOfInput;
};

LineInput CConsoleLineEditor::Read(const std::string& prompt) {
  const CKeyMode mode(m_input);
  m_prompt = prompt;
  m_line.Begin();
  m_completed.clear();
  m_firstHalf = 0;
  m_isDone = false;
  if (g_interrupt) ResetEvent(g_interrupt);
  m_screen.Begin();
  Show();
  while (!m_isDone) {
    INPUT_RECORD record{};
    if (!NextRecord(record)) {
      if (!m_isDone) Finish(LineInput::End::EndOfInput);
    } else if (record.EventType == WINDOW_BUFFER_SIZE_EVENT) {
      m_screen.Resize();
      Show();
    } else if (IsTyped(record)) {
      const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
      for (WORD i = 0; i < std::max<WORD>(1, key.wRepeatCount) && !m_isDone; ++i) Take(key);
      // What is pasted is shown once.
      if (!m_isDone && !HasPendingInput()) Show();
    }
  }
  return {m_end, m_end == LineInput::End::EndOfInput ? std::string() : m_line.Text()};
}

// False where there is nothing more to read, and for an interrupt.
bool CConsoleLineEditor::NextRecord(INPUT_RECORD& record) {
  const HANDLE events[] = {m_input, g_interrupt};
  const DWORD woken = WaitForMultipleObjects(g_interrupt ? 2 : 1, events, FALSE, INFINITE);
  if (woken == WAIT_OBJECT_0 + 1) {
    Finish(LineInput::End::Interrupted);
    return false;
  }
  DWORD count = 0;
  return woken == WAIT_OBJECT_0 && ReadConsoleInputW(m_input, &record, 1, &count) && count == 1;
}

void CConsoleLineEditor::Finish(LineInput::End end) {
  m_line.GoToEnd();
  Show();
  m_screen.End();
  m_end = end;
  m_isDone = true;
}

void CConsoleLineEditor::Show() {
  m_screen.Show(LayOut(m_prompt, m_line.Text(), m_line.Cursor(), m_screen.Columns()));
}

void CConsoleLineEditor::Take(const KEY_EVENT_RECORD& key) {
  const wchar_t character = key.uChar.UnicodeChar;
  if (key.bKeyDown) {
    if (key.wVirtualKeyCode == VK_RETURN) return Finish(LineInput::End::Line);
    // What is typed behind it already was pasted.
    if (key.wVirtualKeyCode == VK_TAB && !HasPendingInput()) return Complete();
    for (const KeyEdit& known : kKeys) {
      if (key.wVirtualKeyCode != known.key) continue;
      m_completed.clear();
      return (m_line.*(IsControlDown(key) ? known.withControl : known.edit))();
    }
  }
  if (character == L'\r' || character == L'\n') return Finish(LineInput::End::Line);
  if (!TakeControl(character)) Insert(character);
}

bool CConsoleLineEditor::TakeControl(wchar_t character) {
  if (character == Control('C')) {
    Finish(LineInput::End::Interrupted);
    return true;
  }
  const bool isEndKey = character == Control('Z') || character == Control('D');
  if (isEndKey && m_line.Text().empty()) {
    Finish(LineInput::End::EndOfInput);
    return true;
  }
  for (const CharacterEdit& known : kControls) {
    if (character != Control(known.letter)) continue;
    (m_line.*known.edit)();
    return true;
  }
  return false;
}

void CConsoleLineEditor::Insert(wchar_t character) {
  const bool isBlank = character == L' ';
  if ((character < L' ' && character != L'\t') || character == 0x7F) return;
  if (IS_HIGH_SURROGATE(character)) {
    m_firstHalf = character;
    return;
  }
  std::wstring text(1, character);
  if (IS_LOW_SURROGATE(character)) text.insert(0, 1, m_firstHalf);
  m_firstHalf = 0;
  if (isBlank) return InsertBlank();
  m_line.Insert(Narrow(text.c_str()));
}

// Who goes on typing behind a completed word types the blank that is there already.
void CConsoleLineEditor::InsertBlank() {
  const bool isThere =
      !m_completed.empty() && m_line.Text().substr(0, m_line.Cursor()) == m_completed;
  m_completed.clear();
  if (!isThere) m_line.Insert(" ");
}

void CConsoleLineEditor::Complete() {
  const std::string line = m_line.Text();
  const Completion completion = m_completer(line, m_line.Cursor());
  if (!IsUsable(completion, line)) return;
  if (const auto text = TextToPutIn(completion, line)) {
    m_line.Replace(completion.offset, completion.length, *text);
    m_completed = text->ends_with(' ') ? m_line.Text().substr(0, m_line.Cursor()) : std::string();
    return;
  }
  m_screen.Write(CompletionList(completion));
  m_screen.Begin();
}

bool CConsoleLineEditor::HasPendingInput() {
  constexpr DWORD kMost = 64;
  INPUT_RECORD records[kMost];
  DWORD count = 0;
  if (!PeekConsoleInputW(m_input, records, kMost, &count)) return false;
  for (DWORD i = 0; i < count; ++i) {
    if (IsTyped(records[i]) && records[i].Event.KeyEvent.uChar.UnicodeChar != 0) return true;
  }
  return false;
}

}  // namespace

std::unique_ptr<CLineEditor> MakeLineEditor(Completer completer) {
  return std::make_unique<CConsoleLineEditor>(std::move(completer));
}

}  // namespace kestra::cli
