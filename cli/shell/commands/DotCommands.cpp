#include "cli/shell/commands/DotCommands.h"

#include <algorithm>

#include "cli/NearNames.h"
#include "cli/Terminal.h"
#include "cli/render/Width.h"
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

constexpr size_t kUsualWidth = 80;
constexpr const char* kSwitch = "on|off";

constexpr DotCommand kCommands[] = {
    {"help", "[COMMAND]", "Tell what there is, or all about one command", Takes::Command, "", Help},
    {"modules", "[PATTERN]", "Name the modules; * and ? are wildcards", Takes::Module, "",
     ShowModules},
    {"describe", "MODULE[.CLASS]", "Tell what a module or a class has", Takes::Module, "",
     Describe},
    {"examples", "MODULE", "Show queries over a module", Takes::Module, "", ShowExamples},
    {"format", "[FORMAT]", "Show results as table, vertical, text, csv, json, jsonl or xml",
     Takes::Words, "table|vertical|text|csv|json|jsonl|xml", SetFormat},
    {"wide", "[on|off]", "Do not cut tables to the width of the terminal", Takes::Words, kSwitch,
     SetWide},
    {"sort", "[COLUMN [desc]|off]", "Show the rows by a column of the result", Takes::Column, "off",
     SetSort},
    {"limit", "[N|off]", "Show that many rows at most", Takes::Words, "off", SetLimit},
    {"timing", "[on|off]", "Tell after each query where its rows came from, and how long it took",
     Takes::Words, kSwitch, SetTiming},
    {"timeout", "[MS|off]", "End a query after that many milliseconds", Takes::Words, "off",
     SetTimeOut},
    {"active", "[on|off]", "Allow statements that change the machine", Takes::Words, kSwitch,
     SetActive},
    {"explain", "QUERY", "Tell how a query would be run", Takes::Query, "", Explain},
    {"dump", "[MODULE[(ARGUMENTS)]|last] [FORMAT]",
     "Show the whole tree of a module, or of the last result, as xml, raw, lines, rawlines or "
     "sections",
     Takes::Dump, "xml|raw|lines|rawlines|sections", Dump},
    {"read", "FILE", "Run the queries and commands of a file; the first that fails ends it",
     Takes::File, "", Read},
    {"output", "[FILE|off]", "Write results into a file", Takes::File, "off", SetOutput},
    {"cache", "[DIR|off]",
     "Keep results in a directory, for queries that ask for it: FROM Processes#60",
     Takes::Directory, "off", SetCache},
    {"plugins", "[DIR|off]", "Add the modules of the plug-ins in a directory", Takes::Directory,
     "off", SetPlugins},
    {"quit", "", "Leave; Ctrl-D does too", Takes::Nothing, "", Quit},
    {"exit", "", "The same", Takes::Nothing, "", Quit},
};

constexpr const char* kHelpOfQueries =
    "A query that is whole in one line is run at once. One of several lines ends with \";\" at the "
    "end of a line, or with an empty line. Tab completes what stands at the cursor, the arrow keys "
    "bring back what was typed, Ctrl-C ends a query that runs and gives up a line that is typed. "
    "Commands may be abbreviated.";

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
  const size_t width = TerminalWidth();
  core.Print(table.Text(width) + '\n' +
             Wrapped(kHelpOfQueries, width == 0 ? kUsualWidth : width, 0) + '\n');
  return true;
}

std::string Unknown(const std::string& name) {
  std::vector<std::string> names;
  for (const DotCommand& command : kCommands) names.push_back(std::string(".") + command.name);
  const std::string wanted = "." + name;
  const std::string near = NearNamesSentence(wanted, names);
  return "there is no command " + wanted + (near.empty() ? "; .help names them" : near);
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
  const DotArguments arguments = ParseArguments(line.substr(end));
  // A query has quotes of its own, and so have the arguments of a module.
  const bool hasOwnQuotes = pCommand->takes == Takes::Query || pCommand->takes == Takes::Dump;
  if (!arguments.isWhole && !hasOwnQuotes) {
    Tell("a quote is missing at the end");
    return false;
  }
  return pCommand->run(core, arguments);
}

}  // namespace kestra::cli
