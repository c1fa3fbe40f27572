// CShell: the interactive shell.
#pragma once

#include <memory>
#include <string>

#include "cli/shell/ShellCore.h"
#include "cli/shell/input/History.h"
#include "cli/shell/input/LineEditor.h"
#include "cli/shell/input/Statement.h"

namespace kestra::cli {

// One thread, and one object in the process.
class CShell {
 public:
  explicit CShell(const Options& options);

  // Until the user leaves. Answers an exit status.
  int Run();

 private:
  std::string Prompt() const;
  void Greet() const;
  void Take(const std::string& line);
  void TakeLineOfQuery(const std::string& line, bool wasHeld);
  bool ContinuesHeld(const std::string& line);
  void GiveUp(const std::string& typed);
  void RunStatement();
  void Remember(const std::string& entry);
  void Hint();

  CShellCore m_core;
  CStatement m_statement;
  // The statement is a whole query, and waits only for what was pasted together with it.
  bool m_isHeld = false;
  bool m_hasHinted = false;
  std::unique_ptr<CLineEditor> m_editor;
  CHistory m_history;
};

}  // namespace kestra::cli
