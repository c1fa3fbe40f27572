#include "cli/shell/Shell.h"

#include <cstdio>
#include <utility>

#include "cli/Terminal.h"
#include "cli/shell/commands/DotCommands.h"
#include "cli/shell/input/Completions.h"

namespace kestra::cli {
namespace {

bool IsBlank(const std::string& line) {
  return line.find_first_not_of(" \t\r") == std::string::npos;
}

// The shell's own words go where somebody reads them.
void Say(const std::string& text) {
  std::FILE* const pFile = IsTerminal(Stream::Out) ? stdout : stderr;
  std::fputs(text.c_str(), pFile);
  std::fflush(pFile);
}

}  // namespace

CShell::CShell(const Options& options)
    : m_core(options), m_editor(MakeLineEditor([this](const std::string& line, size_t cursor) {
        return Complete(m_core, m_statement, line, cursor);
      })) {}

int CShell::Run() {
  if (!m_core.Run([](ShellSession&, const CCancellation&) {})) return kExitUsage;
  for (const std::string& entry : m_history.Entries()) m_editor->AddHistory(entry);
  Greet();
  while (!m_core.IsQuitting()) {
    const LineInput input = m_editor->Read(Prompt());
    if (input.end == LineInput::End::EndOfInput) break;
    if (input.end == LineInput::End::Interrupted) {
      GiveUp(input.text);
    } else {
      Take(input.text);
    }
  }
  if (m_isHeld) RunStatement();
  if (!m_statement.IsEmpty()) Remember(m_statement.Text());
  return kExitResult;
}

void CShell::Greet() const {
  Say("kestra " + std::string(kestra_version()) + "\n.help tells what there is, .quit leaves\n");
}

// As wide in every state, so that lines stand below each other.
std::string CShell::Prompt() const {
  if (m_statement.IsInText()) return "     '> ";
  if (m_statement.IsInComment()) return "    /*> ";
  if (!m_statement.IsEmpty()) return "   ...> ";
  return m_core.CurrentOptions().settings.allowActive ? "kestra!> " : "kestra> ";
}

void CShell::GiveUp(const std::string& typed) {
  std::string entry = m_statement.Text();
  if (!entry.empty() && !IsBlank(typed)) entry += '\n';
  if (!IsBlank(typed)) entry += typed;
  if (!IsBlank(entry)) Remember(entry);
  m_statement.Clear();
  m_isHeld = false;
}

void CShell::Remember(const std::string& entry) {
  if (m_history.Add(entry)) m_editor->AddHistory(entry);
}

void CShell::Take(const std::string& line) {
  const bool wasHeld = std::exchange(m_isHeld, false);
  if (wasHeld && !ContinuesHeld(line)) RunStatement();
  if (!m_statement.IsEmpty()) return TakeLineOfQuery(line, wasHeld);
  if (IsBlank(line)) return;
  if (!IsDotCommand(line)) return TakeLineOfQuery(line, false);
  Remember(line);
  RunDotCommand(m_core, line);
}

// Whether a line that came together with a whole query belongs to it.
bool CShell::ContinuesHeld(const std::string& line) {
  if (IsBlank(line) || IsDotCommand(line)) return false;
  return m_core.Judge(m_statement.Text() + '\n' + line) != TextState::Wrong;
}

void CShell::TakeLineOfQuery(const std::string& line, bool wasHeld) {
  const bool canEnd = !m_statement.IsInText() && !m_statement.IsInComment();
  if (!m_statement.IsEmpty() && canEnd && IsBlank(line)) return RunStatement();
  m_statement.AddLine(line);
  if (m_statement.EndsWithSemicolon()) return RunStatement();
  if (m_statement.IsBlank()) return m_statement.Clear();
  const bool isOpen = m_statement.IsInText() || m_statement.IsInComment();
  // A line that is a query by itself is run at once, and so is one that can never become one; from
  // the second line on the user says where the query ends.
  if ((m_statement.LineCount() == 1 || wasHeld) && !isOpen && !m_statement.WaitsForMore()) {
    const TextState state = m_core.Judge(m_statement.Text());
    const bool hasMore = m_editor->HasPendingInput();
    m_isHeld = state == TextState::Whole && hasMore;
    if (state == TextState::Whole && !hasMore) return RunStatement();
    if (state == TextState::Wrong) return RunStatement();
  }
  if (!m_isHeld) Hint();
}

void CShell::Hint() {
  if (m_hasHinted) return;
  m_hasHinted = true;
  Say("(the query goes on: \";\" or an empty line ends it, Ctrl-C gives it up)\n");
}

void CShell::RunStatement() {
  const std::string text = m_statement.Text();
  m_statement.Clear();
  Remember(text);
  m_core.RunQueries(text);
}

}  // namespace kestra::cli
