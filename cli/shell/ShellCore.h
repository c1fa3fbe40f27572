// CShellCore: what the shell's commands work on: the options as they are now, the session, and
// where results go.
#pragma once

#include <cstdio>
#include <memory>
#include <string>

#include "cli/Options.h"
#include "cli/QueryText.h"
#include "cli/shell/SessionThread.h"

namespace kestra::cli {

// Where results go.
struct ShellTarget {
  std::shared_ptr<std::FILE> file;
  std::string name;
  bool isTerminal = false;
};

// What an unfinished text and a wrong one have in common is that they do not parse.
enum class TextState { Whole, Unfinished, Wrong };

// One thread. What fails is told on standard error, and the answer is false then.
class CShellCore {
 public:
  explicit CShellCore(const Options& options);
  ~CShellCore();

  // The session's own options take effect with the next one: Renew.
  Options& CurrentOptions() { return m_options; }
  const Options& CurrentOptions() const { return m_options; }
  Settings& CurrentSettings() { return m_options.settings; }

  // Runs a job in the session, and waits for it; the interrupt key ends it. A job that does not end
  // then is left behind with its session, and a new session begins.
  bool Run(ShellJob job);
  // A text with one query, or several; the first Error ends them. firstLine is the number of the
  // text's first line for whoever wrote it.
  bool RunQueries(const std::string& text, int32_t firstLine = 1);
  TextState Judge(const std::string& text);
  // A new session with the options as they are now.
  void Renew();

  void Print(const std::string& text);
  // False for a path that cannot be written. Empty: back to standard output.
  bool SetTarget(const std::string& path);
  const ShellTarget& Target() const { return m_target; }

  void Quit() { m_isQuitting = true; }
  bool IsQuitting() const { return m_isQuitting; }
  // How many files are being read by each other.
  int& ScriptDepth() { return m_scriptDepth; }

 private:
  bool RunQuery(const std::shared_ptr<const std::string>& text, const QueryPiece& query);

  Options m_options;
  ShellTarget m_target;
  std::unique_ptr<CSessionThread> m_session;
  bool m_isQuitting = false;
  int m_scriptDepth = 0;
};

// Says something on standard error, behind the command's name.
void Tell(const std::string& sentence);

}  // namespace kestra::cli
