#include "query/diagnose/Completion.h"

#include <algorithm>

#include "VLib/src/text/Text.h"
#include "query/diagnose/completion/Candidates.h"
#include "query/diagnose/completion/CursorText.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

bool StartsWithNoCase(std::string_view text, std::string_view head) {
  size_t position = 0, headPosition = 0;
  while (headPosition < head.size()) {
    if (position >= text.size()) return false;
    const uint32_t c = NextCharacter(text, position);
    if (FoldCharacter(c) != FoldCharacter(NextCharacter(head, headPosition))) return false;
  }
  return true;
}

// The text that what is begun is compared with: of an option what stands between its quotes.
std::string_view Comparable(const Completion& entry) {
  const std::string_view text = entry.text;
  return entry.kind == CompletionKind::Option ? text.substr(1, text.size() - 2) : text;
}

// Whether the word at the cursor has a parenthesis behind it already.
bool IsBeforeParenthesis(std::string_view text, size_t cursor) {
  while (cursor < text.size() && (IsAsciiAlnum(text[cursor]) || text[cursor] == '_')) ++cursor;
  const std::string_view rest = text.substr(cursor);
  return rest.substr(std::min(rest.find_first_not_of(" \t\r\n"), rest.size())).starts_with('(');
}

void DropParentheses(std::vector<Completion>& entries) {
  for (Completion& entry : entries) {
    if (entry.kind != CompletionKind::Option)
      entry.text.resize(std::min(entry.text.find('('), entry.text.size()));
  }
}

ModuleState StateOf(DiagRoot& root, const std::string& source) {
  const DiagClass* const pBuiltIn = IsBuiltInName(source) ? BuiltInModule(source) : nullptr;
  return root.StateOf(pBuiltIn ? pBuiltIn->Name : source).value_or(ModuleState::Ready);
}

// Modules that have nothing to show here are offered where nothing else is, and bear a mark.
void SetUnservedBack(DiagRoot& root, std::vector<Completion>& entries) {
  const auto isUnserved = [&](const Completion& entry) {
    return entry.kind == CompletionKind::Module && StateOf(root, entry.text) != ModuleState::Ready;
  };
  if (!std::all_of(entries.begin(), entries.end(), isUnserved)) {
    std::erase_if(entries, isUnserved);
    return;
  }
  for (Completion& entry : entries) {
    const bool isElsewhere = StateOf(root, entry.text) == ModuleState::NotHere;
    entry.description.insert(0, isElsewhere ? "(not on this machine) " : "(not built yet) ");
  }
}

void Sort(std::vector<Completion>& entries) {
  const auto rank = [](const Completion& entry) {
    return entry.kind == CompletionKind::Column ? -1 : static_cast<int>(entry.kind);
  };
  std::sort(entries.begin(), entries.end(), [&](const Completion& a, const Completion& b) {
    if (rank(a) != rank(b)) return rank(a) < rank(b);
    const int order = CompareNoCase(a.text, b.text);
    return order != 0 ? order < 0 : a.text < b.text;
  });
  const auto isSame = [](const Completion& a, const Completion& b) {
    return a.kind == b.kind && a.text == b.text;
  };
  entries.erase(std::unique(entries.begin(), entries.end(), isSame), entries.end());
}

}  // namespace

Completions Complete(const std::string& text, size_t cursor, const Ref<DiagRoot>& root,
                     Ref<QueryMessage> message) {
  QueryContext context(text, root, 0, std::move(message));
  CursorText cut;
  Completions completions;
  completions.offset = std::min(cursor, text.size());
  if (!CutAtCursor(context.QueryText, completions.offset, cut)) return completions;
  completions.offset = cut.offset;
  completions.length = cut.length;
  context.Tokens = std::move(cut.tokens);
  context.Predicates->AssumeColumns();
  CChart chart(context, cut.place);
  chart.Recognise();
  if (chart.StopPosition() != cut.place) return completions;
  const CExpected expected(chart, cut.place);
  CCandidates candidates(context, expected, cut.place);
  if (cut.isString) {
    candidates.AddOptions(completions.entries);
  } else {
    candidates.AddAll(completions.entries);
  }
  std::erase_if(completions.entries, [&](const Completion& entry) {
    return !StartsWithNoCase(Comparable(entry), cut.begun);
  });
  if (root) SetUnservedBack(*root, completions.entries);
  if (IsBeforeParenthesis(context.QueryText, cut.offset + cut.length)) {
    DropParentheses(completions.entries);
  }
  Sort(completions.entries);
  return completions;
}

}  // namespace kestra
