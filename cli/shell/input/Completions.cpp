#include "cli/shell/input/Completions.h"

#include <algorithm>

#include "cli/Terminal.h"
#include "cli/shell/commands/CommandCompletions.h"
#include "cli/shell/commands/DotCommands.h"

namespace kestra::cli {
namespace {

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

// Where the query begins in a command that takes one; npos for another command, and before it.
size_t StartOfQuery(const std::string& begun) {
  const size_t dot = begun.find('.');
  const size_t end = begun.find_first_of(" \t", dot);
  if (end == std::string::npos) return end;
  std::string why;
  const DotCommand* const pCommand = FindDotCommand(begun.substr(dot + 1, end - dot - 1), why);
  return pCommand && pCommand->takes == Takes::Query ? end : std::string::npos;
}

// Where the string begins that is open at the end of a line; npos for none.
size_t OpenString(const std::string& line) {
  size_t open = std::string::npos;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line[i] == '\'') open = open == std::string::npos ? i : std::string::npos;
  }
  return open;
}

// A path that is begun in a string.
Completion CompletePathInString(const std::string& before) {
  const size_t open = OpenString(before);
  if (open == std::string::npos || !IsFullPath(before.substr(open + 1))) return {};
  Completion completion = CompletePath(before.substr(open + 1), "'", false);
  completion.offset = open + 1;
  // They would end the string.
  std::erase_if(completion.candidates,
                [](const auto& each) { return each.text.find('\'') != std::string::npos; });
  return completion;
}

// above is what stands before the line.
Completion CompleteQuery(CShellCore& core, const std::string& above, const std::string& line,
                         size_t cursor) {
  const auto completion = std::make_shared<Completion>();
  core.Run([completion, text = above + line, place = above.size() + cursor, start = above.size()](
               ShellSession& session, const CCancellation&) {
    const auto found = Take<CCompletionsHandle>(kestra_session_complete, session.handle.get(),
                                                text.data(), text.size(), place);
    if (found) *completion = ReadCompletions(found.get(), start);
  });
  return *completion;
}

Completion Moved(Completion completion, size_t by) {
  completion.offset += by;
  return completion;
}

}  // namespace

Completion Complete(CShellCore& core, const CStatement& before, const std::string& line,
                    size_t cursor) {
  const size_t start = line.find_first_not_of(" \t");
  const bool isCommand =
      before.IsEmpty() && start != std::string::npos && line[start] == '.' && start < cursor;
  const size_t query = isCommand ? StartOfQuery(line.substr(0, cursor)) : 0;
  if (query == std::string::npos) {
    return Moved(CompleteCommand(core, line.substr(start, cursor - start)), start);
  }
  const std::string above = before.IsEmpty() ? std::string() : before.Text() + '\n';
  Completion completion = CompleteQuery(core, above, line.substr(query), cursor - query);
  // The paths are this machine's.
  const bool isHere = !core.CurrentOptions().imageDirectory && !before.IsInText();
  if (completion.candidates.empty() && isHere) {
    completion = CompletePathInString(line.substr(query, cursor - query));
  }
  return Moved(std::move(completion), query);
}

}  // namespace kestra::cli
