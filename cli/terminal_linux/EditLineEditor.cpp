#include "cli/terminal_linux/EditLineEditor.h"

#include <locale.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <stdexcept>
#include <utility>

#include "cli/render/Width.h"
#include "cli/shell/input/CompletionList.h"

namespace kestra::cli {
namespace {

constexpr int kHistoryEntries = 1000;
constexpr char kInterruptKey = 3;  // Ctrl-C

size_t CharacterCount(std::string_view utf8) {
  return static_cast<size_t>(std::count_if(utf8.begin(), utf8.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

struct KeyBinding {
  const char* key;
  const char* function;
};

// What terminals send and libedit does not know by itself.
constexpr KeyBinding kBindings[] = {
    {"\033[1~", "ed-move-to-beg"},      {"\033[4~", "ed-move-to-end"},
    {"\033[3~", "ed-delete-next-char"}, {"\033[1;5D", "ed-prev-word"},
    {"\033[1;5C", "em-next-word"},      {"^R", "em-inc-search-prev"},
};

}  // namespace

CEditLineEditor::CEditLineEditor(const EditLibrary& edit, std::FILE* out, Completer completer)
    : m_edit(edit), m_pOut(out), m_completer(std::move(completer)) {
  // Text is UTF-8, whatever the user's language is.
  setlocale(LC_CTYPE, "C.UTF-8");
  m_pLine = m_edit.init("kestra", stdin, m_pOut, stderr);
  m_pHistory = m_edit.historyInit();
  if (!m_pLine || !m_pHistory) throw std::runtime_error("no line editing");
  HistEvent event{};
  m_edit.changeHistory(m_pHistory, &event, H_SETSIZE, kHistoryEntries);
  m_edit.changeHistory(m_pHistory, &event, H_SETUNIQUE, 1);
  m_edit.set(m_pLine, EL_CLIENTDATA, this);
  m_edit.set(m_pLine, EL_HIST, m_edit.changeHistory, m_pHistory);
  m_edit.set(m_pLine, EL_PROMPT, Prompt);
  m_edit.set(m_pLine, EL_SIGNAL, 0);
  m_edit.set(m_pLine, EL_GETCFN, ReadCharacter);
  BindKeys();
  // Before the first line too. libedit takes over what it finds changed in a terminal that hands
  // out lines, and would so undo what BindKeys sets.
  m_mode.KeepInput();
}

CEditLineEditor::~CEditLineEditor() {
  if (m_pLine) m_edit.end(m_pLine);
  if (m_pHistory) m_edit.historyEnd(m_pHistory);
}

void CEditLineEditor::BindKeys() {
  m_edit.set(m_pLine, EL_EDITOR, "emacs");
  for (const KeyBinding& binding : kBindings) {
    m_edit.set(m_pLine, EL_BIND, binding.key, binding.function, nullptr);
  }
  m_edit.set(m_pLine, EL_ADDFN, "kestra-complete", "complete at the cursor", OnComplete);
  m_edit.set(m_pLine, EL_ADDFN, "kestra-interrupt", "give the line up", OnInterruptKey);
  m_edit.set(m_pLine, EL_ADDFN, "kestra-paste-begin", "take what follows as it is", OnPasteBegin);
  m_edit.set(m_pLine, EL_ADDFN, "kestra-paste-end", "take keys for keys again", OnPasteEnd);
  m_edit.set(m_pLine, EL_BIND, "^I", "kestra-complete", nullptr);
  m_edit.set(m_pLine, EL_BIND, CTerminalMode::kPasteBegin, "kestra-paste-begin", nullptr);
  m_edit.set(m_pLine, EL_BIND, CTerminalMode::kPasteEnd, "kestra-paste-end", nullptr);
  // What the user has set in ~/.editrc comes before ours, but for the key that must work.
  m_edit.source(m_pLine, nullptr);
  // The interrupt key is a key like any other while a line is edited: as a signal it would lose
  // what was typed behind it.
  m_edit.set(m_pLine, EL_SETTY, "-d", "intr=", "+noflsh", nullptr);
  // Between two lines too what is typed is not to be shown where it does not belong.
  m_edit.set(m_pLine, EL_SETTY, "-x", "-echo", "-icanon", "+noflsh", nullptr);
  m_edit.set(m_pLine, EL_BIND, "^C", "kestra-interrupt", nullptr);
  m_edit.set(m_pLine, EL_BIND, "-a", "^C", "kestra-interrupt", nullptr);
}

CEditLineEditor& CEditLineEditor::Of(EditLine* pLine) {
  void* pObject = nullptr;
  LoadEditLibrary()->get(pLine, EL_CLIENTDATA, &pObject);
  return *static_cast<CEditLineEditor*>(pObject);
}

char* CEditLineEditor::Prompt(EditLine* pLine) {
  return Of(pLine).m_prompt.data();
}

LineInput CEditLineEditor::Read(const std::string& prompt) {
  m_prompt = prompt;
  m_wasInterrupted = false;
  m_mode.TakeInterrupt();
  m_mode.TakeOldDisplay();
  m_hasGivenBlank = false;
  m_mode.MarkPastes(fileno(m_pOut));
  int count = 0;
  const char* text = m_edit.gets(m_pLine, &count);
  m_mode.LeavePastesAlone();
  m_mode.KeepInput();
  LineInput input;
  if (text && count > 0) input.text.assign(text, static_cast<size_t>(count));
  if (input.text.ends_with('\n')) input.text.pop_back();
  const bool hasLine = text && count > 0;
  if (m_wasInterrupted) {
    input.end = LineInput::End::Interrupted;
  } else if (hasLine) {
    input.end = LineInput::End::Line;
  }
  if (!hasLine) std::fputc('\n', m_pOut);
  return input;
}

// The signals that come meanwhile are answered between two reads, where the display is whole.
int CEditLineEditor::ReadByte(char& byte) {
  if (!m_ahead.empty()) {
    byte = m_ahead.front();
    m_ahead.erase(0, 1);
    return 1;
  }
  for (;;) {
    const bool hasInput = CTerminalMode::AwaitInput();
    if (m_mode.TakeInterrupt()) {
      byte = kInterruptKey;
      return 1;
    }
    if (m_mode.TakeOldDisplay()) {
      m_edit.resize(m_pLine);
      m_edit.set(m_pLine, EL_REFRESH);
    }
    if (!hasInput) continue;
    const ssize_t count = read(STDIN_FILENO, &byte, 1);
    if (count >= 0) return static_cast<int>(count);
    if (errno != EAGAIN && errno != EINTR) return -1;
  }
}

int CEditLineEditor::ReadCharacter(EditLine* pLine, wchar_t* pCharacter) {
  constexpr auto kGoesOn = static_cast<size_t>(-2);
  std::mbstate_t state{};
  for (;;) {
    char byte = 0;
    const int count = Of(pLine).ReadByte(byte);
    if (count <= 0) return count;
    const bool isBegun = std::mbsinit(&state) == 0;
    size_t length = std::mbrtowc(pCharacter, &byte, 1, &state);
    if (length > 1 && length != kGoesOn) {
      // No UTF-8: left out, but for a byte that begins another character.
      state = {};
      if (isBegun) length = std::mbrtowc(pCharacter, &byte, 1, &state);
      if (length > 1 && length != kGoesOn) state = {};
    }
    if (length > 1) continue;
    // Who goes on typing behind a completed word types the blank that is there already.
    const bool isThere = std::exchange(Of(pLine).m_hasGivenBlank, false);
    if (*pCharacter != L' ' || !isThere) return 1;
  }
}

void CEditLineEditor::AddHistory(const std::string& entry) {
  HistEvent event{};
  m_edit.changeHistory(m_pHistory, &event, H_ENTER, entry.c_str());
}

bool CEditLineEditor::HasPendingInput() {
  return !(m_isPasting && EndsPaste()) && (!m_ahead.empty() || CTerminalMode::HasInput());
}

// Whether nothing but the mark is left of what was pasted. The mark, which may come in pieces, is
// read and forgotten then.
bool CEditLineEditor::EndsPaste() {
  constexpr int kPatienceMs = 100;
  const std::string_view mark = CTerminalMode::kPasteEnd;
  while (m_ahead.size() < mark.size() && mark.starts_with(m_ahead)) {
    pollfd waiting{STDIN_FILENO, POLLIN, 0};
    char byte = 0;
    if (poll(&waiting, 1, kPatienceMs) != 1 || read(STDIN_FILENO, &byte, 1) != 1) return false;
    m_ahead += byte;
  }
  if (m_ahead != mark) return false;
  m_ahead.clear();
  m_isPasting = false;
  return !CTerminalMode::HasInput();
}

std::string CEditLineEditor::TextOfLine(size_t& cursor) const {
  const LineInfo* pInfo = m_edit.line(m_pLine);
  cursor = static_cast<size_t>(pInfo->cursor - pInfo->buffer);
  return {pInfo->buffer, pInfo->lastchar};
}

// The line goes the way of any other, so that the display is right; Read tells the difference.
unsigned char CEditLineEditor::OnInterruptKey(EditLine* pLine, int) {
  CEditLineEditor& self = Of(pLine);
  self.m_wasInterrupted = true;
  self.m_isPasting = false;
  self.m_edit.push(pLine, "\n");
  return CC_NORM;
}

unsigned char CEditLineEditor::OnPasteBegin(EditLine* pLine, int) {
  Of(pLine).m_isPasting = true;
  return CC_NORM;
}

unsigned char CEditLineEditor::OnPasteEnd(EditLine* pLine, int) {
  Of(pLine).m_isPasting = false;
  return CC_NORM;
}

unsigned char CEditLineEditor::OnComplete(EditLine* pLine, int) {
  try {
    if (!Of(pLine).m_isPasting) return Of(pLine).Complete();
    Of(pLine).m_edit.insertText(pLine, "\t");
    return CC_REFRESH;
  } catch (const std::exception&) {
    return CC_ERROR;  // a line without help is still a line
  }
}

unsigned char CEditLineEditor::Complete() {
  size_t cursor = 0;
  const std::string line = TextOfLine(cursor);
  const Completion completion = m_completer(line, cursor);
  if (!IsUsable(completion, line)) return CC_REFRESH_BEEP;
  const auto text = TextToPutIn(completion, line);
  if (!text) {
    List(completion);
    return CC_REDISPLAY;
  }
  Replace(completion, *text);
  m_hasGivenBlank = text->ends_with(' ');
  return CC_REFRESH;
}

void CEditLineEditor::Replace(const Completion& completion, const std::string& text) {
  size_t cursor = 0;
  const std::string line = TextOfLine(cursor);
  const size_t end = completion.offset + completion.length;
  const auto charactersTo = [&](size_t place) {
    return static_cast<int>(CharacterCount(std::string_view(line).substr(0, place)));
  };
  m_edit.moveCursor(m_pLine, charactersTo(end) - charactersTo(cursor));
  m_edit.deleteBefore(m_pLine, charactersTo(end) - charactersTo(completion.offset));
  m_edit.insertText(m_pLine, text.c_str());
}

void CEditLineEditor::List(const Completion& completion) {
  const std::string list = CompletionList(completion);
  std::fprintf(m_pOut, "\n%s", list.c_str());
  std::fflush(m_pOut);
}

}  // namespace kestra::cli
