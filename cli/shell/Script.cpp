#include "cli/shell/Script.h"

#include <algorithm>

#include "cli/shell/commands/DotCommands.h"
#include "cli/shell/input/Statement.h"

namespace kestra::cli {
namespace {

class CScript {
 public:
  explicit CScript(CShellCore& core) : m_core(core) {}

  bool RunLine(const std::string& line) {
    ++m_line;
    if (m_statement.IsBlank() && IsDotCommand(line)) return RunDotCommand(m_core, line);
    if (m_statement.IsEmpty()) m_firstLine = m_line;
    m_statement.AddLine(line);
    return !m_statement.EndsWithSemicolon() || RunStatement();
  }
  bool RunStatement() {
    const std::string text = m_statement.Text();
    m_statement.Clear();
    return m_core.RunQueries(text, m_firstLine);
  }

 private:
  CShellCore& m_core;
  CStatement m_statement;
  int32_t m_line = 0;
  int32_t m_firstLine = 1;  // of the statement
};

}  // namespace

bool RunScript(CShellCore& core, const std::string& text) {
  CScript script(core);
  for (size_t start = 0; start < text.size() && !core.IsQuitting();) {
    const size_t end = std::min(text.find('\n', start), text.size());
    std::string line = text.substr(start, end - start);
    if (line.ends_with('\r')) line.pop_back();
    if (!script.RunLine(line)) return false;
    start = end + 1;
  }
  return core.IsQuitting() || script.RunStatement();
}

}  // namespace kestra::cli
