// Dot commands: what the shell understands beside queries.
#pragma once

#include <span>
#include <string>

#include "cli/shell/ShellCore.h"
#include "cli/shell/commands/DotArguments.h"

namespace kestra::cli {

// What an argument is, for its completion.
enum class Takes { Nothing, Words, Command, Module, Dump, Column, Query, File, Directory };

struct DotCommand {
  const char* name;  // without the dot
  const char* arguments;
  const char* help;  // a sentence
  Takes takes;
  const char* words;  // that an argument may be beside that, parted by "|"
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

}  // namespace kestra::cli
