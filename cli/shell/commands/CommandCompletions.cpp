#include "cli/shell/commands/CommandCompletions.h"

#include <algorithm>

#include "cli/Terminal.h"
#include "cli/render/Items.h"
#include "cli/shell/commands/ClassTree.h"

namespace kestra::cli {
namespace {

using Candidates = std::vector<Completion::Candidate>;

void CollectClasses(const CClassHandle& diagClass, const std::string& module, Candidates& names) {
  for (const CClassHandle& child : ChildrenOf(diagClass)) {
    const std::string name = module + "." + NameOf(child);
    const bool isKnown = std::any_of(names.begin(), names.end(),
                                     [&](const auto& known) { return known.text == name; });
    if (!isKnown) names.push_back({name, DescriptionOf(child)});
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
  } else {
    for (const CClassHandle& module : ModulesOf(session)) {
      const std::string name = NameOf(module);
      const std::string state = StateOf(session, name);
      names.push_back({name, (state.empty() ? "" : "(" + state + ") ") + DescriptionOf(module)});
    }
  }
  std::sort(names.begin(), names.end(), [](const auto& left, const auto& right) {
    return FoldCase(left.text) < FoldCase(right.text);
  });
  return names;
}

// The columns of the last result; the properties of its first row where that is an item.
Candidates ColumnNames(const ShellSession& session) {
  Candidates names;
  const auto columns = Take<CColumnsHandle>(kestra_session_columns, session.handle.get());
  const int32_t count = columns ? Ask<int32_t>(kestra_columns_count, columns.get()) : 0;
  for (int32_t i = 0; i < count; ++i) {
    names.push_back({Ask<const char*>(kestra_columns_name, columns.get(), i), ""});
  }
  if (!names.empty() || !session.lastResult) return names;
  const auto rows = Take<CValuesHandle>(kestra_value_as_vector, session.lastResult.get());
  if (!rows || Ask<int32_t>(kestra_values_count, rows.get()) == 0) return names;
  const auto row = Take<CValueHandle>(kestra_values_value, rows.get(), 0);
  const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, row.get());
  if (!item) return names;
  CItemLayouts layouts;
  for (const auto& property : layouts.Of(item.get()).properties)
    names.push_back({property.name, ""});
  return names;
}

Candidates CommandNames(const char* dot) {
  Candidates names;
  for (const DotCommand& command : AllDotCommands()) {
    names.push_back({std::string(dot) + command.name, command.help});
  }
  return names;
}

void AddWords(const std::string& words, Candidates& names) {
  for (size_t start = 0; start < words.size();) {
    const size_t end = std::min(words.find('|', start), words.size());
    names.push_back({words.substr(start, end - start), ""});
    start = end + 1;
  }
}

template <class Find>
void AddFromSession(CShellCore& core, const Find& find, Candidates& names) {
  const auto found = std::make_shared<Candidates>();
  core.Run([found, find](ShellSession& session, const CCancellation&) {
    try {
      *found = find(session);
    } catch (const CUnknownName&) {
      // There is nothing below what there is not.
    }
  });
  names.insert(names.end(), found->begin(), found->end());
}

// begun is the argument at the cursor, number how many stand before it.
Candidates ArgumentsOf(CShellCore& core, const DotCommand& command, const std::string& begun,
                       size_t number) {
  Candidates names;
  const bool isModule = command.takes == Takes::Module || command.takes == Takes::Dump;
  const bool isFirst = number == 0;
  if (command.takes == Takes::Command && isFirst) {
    names = CommandNames(begun.starts_with('.') ? "." : "");
  } else if (isModule && isFirst) {
    AddFromSession(
        core, [begun](ShellSession& session) { return ModuleNames(session.handle.get(), begun); },
        names);
  } else if (command.takes == Takes::Column && isFirst) {
    AddFromSession(
        core, [](ShellSession& session) { return ColumnNames(session); }, names);
  }
  if (command.takes == Takes::Column && number == 1) AddWords("asc|desc", names);
  const bool hasWords = command.takes == Takes::Dump ? number == 1 : isFirst;
  if (hasWords) AddWords(command.words, names);
  if (command.takes == Takes::Dump && isFirst) AddWords("last", names);
  return names;
}

void KeepBegun(Candidates&& all, const std::string& begun, Candidates& kept) {
  const std::string folded = FoldCase(begun);
  std::copy_if(all.begin(), all.end(), std::back_inserter(kept),
               [&](const auto& each) { return FoldCase(each.text).starts_with(folded); });
}

// A path as an argument: in quotes where what is common to all may need them.
Completion PathArgument(const std::string& begun, size_t offset, bool onlyDirectories) {
  const bool isQuoted = begun.starts_with('\'') || begun.starts_with('"');
  const std::string quote = isQuoted ? begun.substr(0, 1) : std::string();
  Completion completion =
      CompletePath(begun.substr(quote.size()), quote.empty() ? " " : quote, onlyDirectories);
  completion.offset = offset;
  completion.length = begun.size();
  const bool needsQuote = std::all_of(
      completion.candidates.begin(), completion.candidates.end(),
      [](const auto& each) { return each.text.find_first_of(" ;") != std::string::npos; });
  const char* const pQuote = isQuoted ? quote.c_str() : needsQuote ? "\"" : "";
  for (auto& candidate : completion.candidates) candidate.text.insert(0, pQuote);
  if (!completion.ending.empty() && *pQuote != '\0') completion.ending = pQuote;
  return completion;
}

}  // namespace

Completion CompletePath(const std::string& begun, const std::string& ending, bool onlyDirectories) {
  Completion completion{0, begun.size(), {}, ending};
  completion.isExact = true;
  for (FoundPath& path : PathsBeginningWith(begun)) {
    if (onlyDirectories && !path.isDirectory) continue;
    // What follows a directory is what is in it.
    if (path.isDirectory) completion.ending.clear();
    completion.candidates.push_back({std::move(path.text), ""});
  }
  return completion;
}

Completion CompleteCommand(CShellCore& core, const std::string& begun) {
  const size_t end = begun.find_first_of(" \t");
  if (end == std::string::npos) {
    Completion completion{0, begun.size(), {}, " "};
    KeepBegun(CommandNames("."), begun, completion.candidates);
    return completion;
  }
  std::string why;
  const DotCommand* const pCommand = FindDotCommand(begun.substr(1, end - 1), why);
  if (!pCommand) return {};
  const std::string arguments = begun.substr(end);
  const size_t start = LastArgument(arguments);
  const std::string last = arguments.substr(start);
  const size_t number = ParseArguments(arguments.substr(0, start)).words.size();
  const bool isPath = pCommand->takes == Takes::File || pCommand->takes == Takes::Directory;
  if (isPath && number > 0) return {};
  Completion completion{end + start, last.size(), {}, " "};
  if (isPath) completion = PathArgument(last, end + start, pCommand->takes == Takes::Directory);
  KeepBegun(ArgumentsOf(core, *pCommand, last, number), last, completion.candidates);
  return completion;
}

}  // namespace kestra::cli
