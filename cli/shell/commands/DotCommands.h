// Dot commands: what the shell understands beside queries.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "cli/shell/ShellCore.h"

namespace kestra::cli {

struct DotArguments {
  std::vector<std::string> words;  // without quotes
  std::string text;                // all of them as they were typed
};

struct DotCommand {
  const char* name;  // without the dot
  const char* arguments;
  const char* help;  // a sentence
  // False when it failed, which it has told then.
  bool (*run)(CShellCore& core, const DotArguments& arguments);
};

// In the order of the help.
std::span<const DotCommand> AllDotCommands();
// By its name or a beginning that is no other's; null, with a sentence that tells why, if there is
// none.
const DotCommand* FindDotCommand(const std::string& name, std::string& why);

// Whether a line begins with a dot; blanks before it do not count.
bool IsDotCommand(const std::string& line);
// Runs such a line. False when it failed, which it has told then.
bool RunDotCommand(CShellCore& core, const std::string& line);

// Parts a text at its blanks; a part may be quoted by ' or ". A ";" at the end is left out.
DotArguments ParseArguments(const std::string& text);

}  // namespace kestra::cli
