#include "cli/shell/input/Completions.h"

#include <algorithm>

#include "cli/Terminal.h"
#include "cli/shell/commands/ClassTree.h"
#include "cli/shell/commands/DotCommands.h"

namespace kestra::cli {
namespace {

using Candidates = std::vector<Completion::Candidate>;

void CollectClasses(const CClassHandle& diagClass, const std::string& module, Candidates& names) {
  for (const CClassHandle& child : ChildrenOf(diagClass)) {
    names.push_back({module + "." + NameOf(child), DescriptionOf(child)});
    CollectClasses(child, module, names);
  }
}

// The modules, and behind a dot the classes of the one that is named before it.
Candidates ModuleNames(kestra_session* session, const std::string& begun) {
  Candidates names;
  const size_t dot = begun.find('.');
  if (dot != std::string::npos) {
    const CClassHandle module = FindModule(session, begun.substr(0, dot));
    CollectClasses(module, NameOf(module), names);
    return names;
  }
  for (const CClassHandle& module : ModulesOf(session)) {
    names.push_back({NameOf(module), DescriptionOf(module)});
  }
  return names;
}

Candidates CommandNames(const std::string& dot) {
  Candidates names;
  for (const DotCommand& command : AllDotCommands()) {
    names.push_back({dot + command.name, command.help});
  }
  return names;
}

// The words that a command's arguments name: "[on|off]", "[MS|off]".
Candidates FixedWords(const std::string& command) {
  if (command == "format") {
    return {{"table", ""}, {"vertical", ""}, {"text", ""}, {"csv", ""},
            {"json", ""},  {"jsonl", ""},    {"xml", ""}};
  }
  const bool isSwitch = command == "wide" || command == "timing" || command == "active";
  if (isSwitch) return {{"on", ""}, {"off", ""}};
  return {{"off", ""}};
}

bool TakesModule(const std::string& command) {
  return command == "describe" || command == "examples" || command == "modules" ||
         command == "dump";
}

Candidates ArgumentsOf(CShellCore& core, const std::string& command, const std::string& begun) {
  if (command == "help") return CommandNames("");
  if (!TakesModule(command)) return FixedWords(command);
  const auto names = std::make_shared<Candidates>();
  core.Run([names, begun](ShellSession& session, const CCancellation&) {
    try {
      *names = ModuleNames(session.handle.get(), begun);
    } catch (const CUnknownName&) {
      // There is nothing below what there is not.
    }
  });
  return *names;
}

Completion CompleteCommand(CShellCore& core, const std::string& line, size_t cursor) {
  const std::string before = line.substr(0, cursor);
  const size_t word = before.find_last_of(" \t") + 1;  // 0 where there is no blank
  const size_t dot = before.find('.');
  Completion completion{word, cursor - word, {}, " "};
  const std::string begun = before.substr(word);
  Candidates all;
  if (word <= dot) {
    all = CommandNames(".");
  } else {
    std::string why;
    const size_t end = before.find_first_of(" \t", dot);
    const DotCommand* pCommand = FindDotCommand(before.substr(dot + 1, end - dot - 1), why);
    if (pCommand) all = ArgumentsOf(core, pCommand->name, begun);
  }
  const std::string folded = FoldCase(begun);
  std::copy_if(all.begin(), all.end(), std::back_inserter(completion.candidates),
               [&](const auto& each) { return FoldCase(each.text).starts_with(folded); });
  return completion;
}

Completion ReadCompletions(kestra_completions* completions, size_t lineStart) {
  Completion completion;
  Check(kestra_completions_place(completions, &completion.offset, &completion.length));
  // What begins on a line above is not replaced.
  if (completion.offset < lineStart) return {};
  completion.offset -= lineStart;
  const int32_t count = Ask<int32_t>(kestra_completions_count, completions);
  size_t options = 0;
  for (int32_t i = 0; i < count; ++i) {
    const char *text = "", *description = "";
    int32_t kind = 0;
    Check(kestra_completions_text(completions, i, &text, &kind, &description));
    // Where an option may stand it is what is wanted most often.
    const bool isOption = kind == KESTRA_COMPLETION_OPTION;
    const auto place =
        isOption ? static_cast<std::ptrdiff_t>(options++) : std::ssize(completion.candidates);
    completion.candidates.insert(completion.candidates.begin() + place, {text, description});
    const bool isWhole = !std::string_view(text).ends_with('(');
    if (isWhole && (kind == KESTRA_COMPLETION_KEYWORD || kind == KESTRA_COMPLETION_CLASS)) {
      completion.ending = " ";
    } else if (kind == KESTRA_COMPLETION_MODULE) {
      completion.ending = ".";
    } else {
      completion.ending.clear();
    }
  }
  return completion;
}

Completion CompleteQuery(CShellCore& core, const CStatement& before, const std::string& line,
                         size_t cursor) {
  const std::string above = before.IsEmpty() ? std::string() : before.Text() + '\n';
  const auto completion = std::make_shared<Completion>();
  core.Run([completion, text = above + line, place = above.size() + cursor, start = above.size()](
               ShellSession& session, const CCancellation&) {
    const auto found = Take<CCompletionsHandle>(kestra_session_complete, session.handle.get(),
                                                text.data(), text.size(), place);
    if (found) *completion = ReadCompletions(found.get(), start);
  });
  return *completion;
}

}  // namespace

Completion Complete(CShellCore& core, const CStatement& before, const std::string& line,
                    size_t cursor) {
  const size_t start = line.find_first_not_of(" \t");
  const bool isCommand =
      before.IsEmpty() && start != std::string::npos && line[start] == '.' && start < cursor;
  return isCommand ? CompleteCommand(core, line, cursor)
                   : CompleteQuery(core, before, line, cursor);
}

}  // namespace kestra::cli
