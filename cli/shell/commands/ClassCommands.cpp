#include "cli/shell/commands/ClassCommands.h"

#include <map>

#include "cli/Terminal.h"
#include "cli/shell/TextTable.h"
#include "cli/shell/commands/ClassText.h"
#include "cli/shell/commands/ClassTree.h"

namespace kestra::cli {
namespace {

// "*" stands for any text, "?" for any byte; both texts in their small form.
bool Matches(std::string_view text, std::string_view pattern) {
  size_t place = 0, star = std::string_view::npos, retry = 0;
  for (size_t i = 0; i < text.size();) {
    const bool isMore = place < pattern.size();
    if (isMore && pattern[place] == '*') {
      star = place++;
      retry = i;
    } else if (isMore && (pattern[place] == '?' || pattern[place] == text[i])) {
      ++place;
      ++i;
    } else if (star != std::string_view::npos) {
      place = star + 1;
      i = ++retry;
    } else {
      return false;
    }
  }
  return pattern.find_first_not_of('*', place) == std::string_view::npos;
}

// Prints what a job makes of the session.
template <class MakeText>
bool PrintFromSession(CShellCore& core, MakeText makeText) {
  const auto text = std::make_shared<std::string>();
  const bool isDone = core.Run([text, makeText](ShellSession& session, const CCancellation&) {
    *text = makeText(session.handle.get());
  });
  if (isDone) core.Print(*text);
  return isDone;
}

std::string ListModules(kestra_session* session, const std::string& pattern, size_t width) {
  std::map<std::string, std::string> lines;  // by name
  for (const CClassHandle& module : ModulesOf(session)) {
    const std::string name = NameOf(module);
    if (!Matches(FoldCase(name), pattern)) continue;
    const std::string state = StateOf(session, name);
    const std::string mark = state.empty() ? "" : "(" + state + ") ";
    lines.emplace(name, mark + FirstSentence(DescriptionOf(module)));
  }
  CTextTable table;
  for (const auto& [name, line] : lines) table.AddLine({name, line});
  if (table.IsEmpty()) {
    throw CUnknownName("there is no module whose name is like that; .modules names them");
  }
  return table.Text(width);
}

std::string DescribeNamed(kestra_session* session, const std::string& name, size_t width) {
  const size_t dot = name.find('.');
  const CClassHandle module = FindModule(session, name.substr(0, dot));
  const std::string moduleName = NameOf(module);
  const std::string state = StateOf(session, moduleName);
  const std::string note = state.empty() ? "" : "\n" + moduleName + " is " + state + ".\n";
  if (dot == std::string::npos) return DescribeClass(module, moduleName, width) + note;
  const CClassHandle diagClass = FindClass(module, name.substr(dot + 1));
  return DescribeClass(diagClass, moduleName + "." + NameOf(diagClass), width) + note;
}

void AppendExamples(const CClassHandle& diagClass, std::string& text) {
  const int32_t count = Ask<int32_t>(kestra_class_example_count, diagClass.get());
  for (int32_t i = 0; i < count; ++i) {
    text += Ask<const char*>(kestra_class_example, diagClass.get(), i);
    text += '\n';
  }
  for (const CClassHandle& child : ChildrenOf(diagClass)) AppendExamples(child, text);
}

std::string ExamplesOf(kestra_session* session, const std::string& name) {
  const CClassHandle module = FindModule(session, name.substr(0, name.find('.')));
  std::string text;
  AppendExamples(module, text);
  if (text.empty()) throw CUnknownName("there are no examples of " + NameOf(module));
  return text;
}

bool TakesOneName(const DotArguments& arguments, const char* command) {
  if (arguments.words.size() == 1) return true;
  Tell(std::string(command) + " takes the name of a module; .modules names them");
  return false;
}

}  // namespace

bool ShowModules(CShellCore& core, const DotArguments& arguments) {
  if (arguments.words.size() > 1) {
    Tell(".modules takes one pattern");
    return false;
  }
  const std::string pattern = arguments.words.empty() ? "*" : FoldCase(arguments.words.front());
  const size_t width = TerminalWidth();
  return PrintFromSession(core, [pattern, width](kestra_session* session) {
    return ListModules(session, pattern, width);
  });
}

bool Describe(CShellCore& core, const DotArguments& arguments) {
  if (!TakesOneName(arguments, ".describe")) return false;
  const std::string name = arguments.words.front();
  const size_t width = TerminalWidth();
  return PrintFromSession(
      core, [name, width](kestra_session* session) { return DescribeNamed(session, name, width); });
}

bool ShowExamples(CShellCore& core, const DotArguments& arguments) {
  if (!TakesOneName(arguments, ".examples")) return false;
  const std::string name = arguments.words.front();
  return PrintFromSession(core,
                          [name](kestra_session* session) { return ExamplesOf(session, name); });
}

}  // namespace kestra::cli
