#include "cli/shell/commands/DotCommands.h"

#include <algorithm>

#include "cli/NearNames.h"
#include "cli/Terminal.h"
#include "cli/shell/TextTable.h"
#include "cli/shell/commands/ClassCommands.h"
#include "cli/shell/commands/QueryCommands.h"
#include "cli/shell/commands/SettingCommands.h"

namespace kestra::cli {
namespace {

bool Help(CShellCore& core, const DotArguments& arguments);
bool Quit(CShellCore& core, const DotArguments&) {
  core.Quit();
  return true;
}

constexpr DotCommand kCommands[] = {
    {"help", "[COMMAND]", "Tell what there is, or all about one command", Help},
    {"modules", "[PATTERN]", "Name the modules; * and ? are wildcards", ShowModules},
    {"describe", "MODULE[.CLASS]", "Tell what a module or a class has", Describe},
    {"examples", "MODULE", "Show queries over a module", ShowExamples},
    {"format", "[FORMAT]", "Show results as table, vertical, text, csv, json, jsonl or xml",
     SetFormat},
    {"wide", "[on|off]", "Do not cut tables to the width of the terminal", SetWide},
    {"sort", "[COLUMN [desc]|off]", "Show the rows by a column of the result", SetSort},
    {"limit", "[N|off]", "Show that many rows at most", SetLimit},
    {"timing", "[on|off]", "Tell after each query where its rows came from, and how long it took",
     SetTiming},
    {"timeout", "[MS|off]", "End a query after that many milliseconds", SetTimeOut},
    {"active", "[on|off]", "Allow statements that change the machine", SetActive},
    {"explain", "QUERY", "Tell how a query would be run", Explain},
    {"dump", "[MODULE[(ARGUMENTS)]|last] [FORMAT]",
     "Show the whole tree of a module, or of the last result, as xml, raw, lines, rawlines or "
     "sections",
     Dump},
    {"read", "FILE", "Run the queries and commands of a file; the first that fails ends it", Read},
    {"output", "[FILE|off]", "Write results into a file", SetOutput},
    {"cache", "[DIR|off]",
     "Keep results in a directory, for queries that ask for it: FROM Processes#60", SetCache},
    {"plugins", "[DIR|off]", "Add the modules of the plug-ins in a directory", SetPlugins},
    {"quit", "", "Leave; Ctrl-D does too", Quit},
    {"exit", "", "The same", Quit},
};

constexpr const char* kHelpOfQueries =
    "\nA query that is whole in one line is run at once. One of several lines ends with \";\" at "
    "the "
    "end\nof a line, or with an empty line. Tab completes what stands at the cursor, the arrow "
    "keys "
    "bring\nback what was typed, Ctrl-C ends a query that runs and gives up a line that is typed. "
    "Commands\nmay be abbreviated.\n";

std::string HeadOf(const DotCommand& command) {
  const std::string head = std::string(".") + command.name;
  return *command.arguments ? head + " " + command.arguments : head;
}

bool Help(CShellCore& core, const DotArguments& arguments) {
  if (!arguments.words.empty()) {
    const std::string& name = arguments.words.front();
    std::string why;
    const DotCommand* pCommand = FindDotCommand(name.starts_with('.') ? name.substr(1) : name, why);
    if (!pCommand) {
      Tell(why);
      return false;
    }
    core.Print(HeadOf(*pCommand) + "\n  " + pCommand->help + "\n");
    return true;
  }
  CTextTable table;
  for (const DotCommand& command : kCommands) table.AddLine({HeadOf(command), command.help});
  core.Print(table.Text(TerminalWidth()) + kHelpOfQueries);
  return true;
}

std::string Unknown(const std::string& name) {
  std::vector<std::string> names;
  for (const DotCommand& command : kCommands) names.push_back(std::string(".") + command.name);
  const std::string wanted = "." + name;
  const std::string near = NearNamesSentence(wanted, names);
  return "there is no command " + wanted + (near.empty() ? ": .help names them" : near);
}

}  // namespace

std::span<const DotCommand> AllDotCommands() {
  return kCommands;
}

const DotCommand* FindDotCommand(const std::string& name, std::string& why) {
  const std::string folded = FoldCase(name);
  const DotCommand* pFound = nullptr;
  std::string others;
  for (const DotCommand& command : kCommands) {
    if (folded == command.name) return &command;
    if (folded.empty() || !std::string_view(command.name).starts_with(folded)) continue;
    if (pFound) others += std::string(", .") + command.name;
    if (!pFound) pFound = &command;
  }
  if (!pFound) why = Unknown(name);
  if (others.empty()) return pFound;
  why = "." + name + " may be ." + pFound->name + others;
  return nullptr;
}

DotArguments ParseArguments(const std::string& text) {
  constexpr const char* kBlanks = " \t\r\n";
  DotArguments arguments;
  const size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  const size_t behind = text.find_last_not_of(" \t\r\n;") + 1;
  arguments.text = behind > first ? text.substr(first, behind - first) : std::string();
  char quote = 0;
  bool isInWord = false;
  for (const char c : arguments.text) {
    const bool isBlank = quote == 0 && std::string_view(kBlanks).find(c) != std::string::npos;
    if (!isBlank && !isInWord) arguments.words.emplace_back();
    const bool isOpening = !isInWord && (c == '\'' || c == '"');
    isInWord = !isBlank;
    if (isOpening) {
      quote = c;
    } else if (quote != 0 && c == quote) {
      quote = 0;
    } else if (isInWord) {
      arguments.words.back() += c;
    }
  }
  return arguments;
}

bool IsDotCommand(const std::string& line) {
  const size_t start = line.find_first_not_of(" \t");
  return start != std::string::npos && line[start] == '.';
}

bool RunDotCommand(CShellCore& core, const std::string& line) {
  const size_t start = line.find('.') + 1;
  const size_t end = std::min(line.find_first_of(" \t\r\n;", start), line.size());
  std::string why;
  const DotCommand* pCommand = FindDotCommand(line.substr(start, end - start), why);
  if (!pCommand) {
    Tell(why);
    return false;
  }
  return pCommand->run(core, ParseArguments(line.substr(end)));
}

}  // namespace kestra::cli
