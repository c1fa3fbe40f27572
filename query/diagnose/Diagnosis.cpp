#include "query/diagnose/Diagnosis.h"

#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/QueryContext.h"
#include "query/diagnose/Wording.h"
#include "query/diagnose/rules/Rules.h"
#include "query/parse/Predicates.h"

namespace kestra {
namespace {

void FindLineAndColumn(std::string_view text, Diagnosis& diagnosis) {
  const std::string_view before = text.substr(0, diagnosis.offset);
  size_t lineBegin = 0;
  for (size_t end = before.find('\n'); end != before.npos; end = before.find('\n', lineBegin)) {
    ++diagnosis.line;
    lineBegin = end + 1;
  }
  // A byte order mark is no character of the first line.
  const std::string_view mark = "\xEF\xBB\xBF";
  if (lineBegin == 0 && before.starts_with(mark)) lineBegin = mark.size();
  diagnosis.column += static_cast<int32_t>(CountCharacters(before.substr(lineBegin)));
}

Diagnosis FromFinding(std::string_view text, Finding finding) {
  Diagnosis diagnosis;
  diagnosis.isError = finding.isError;
  diagnosis.offset = finding.offset;
  diagnosis.length = finding.length;
  diagnosis.message = std::move(finding.message);
  diagnosis.suggestions = std::move(finding.suggestions);
  FindLineAndColumn(text, diagnosis);
  return diagnosis;
}

// What is known without any rule.
Finding PlainFinding(const CFailedText& text) {
  Finding finding;
  const size_t i = text.Position();
  const bool isEnd = i >= text.Count();
  const std::string what =
      isEnd ? "the text ends too early" : InQuotes(text.Text(i)) + " cannot stand here";
  const std::string expected = text.Expected().Sentence();
  text.Say(finding, i, expected.empty() ? what : what + "; expected " + expected);
  return finding;
}

Finding FindFault(CFailedText& text) {
  for (const auto& rules : {CharacterRules(), MarkRules(), ForeignWordRules(), SourceShapeRules(),
                            SourceRules(), ValueRules(), FunctionRules(), StructureRules(),
                            ConditionRules(), KeywordRules(), ColumnRules()}) {
    for (const FailureRule rule : rules) {
      Finding finding;
      if (rule(text, finding)) return finding;
    }
  }
  return PlainFinding(text);
}

}  // namespace

std::optional<Diagnosis> Diagnose(const std::string& text, const Ref<DiagRoot>& root,
                                  Ref<QueryMessage> message) {
  QueryContext context(text, root, 0, std::move(message));
  const std::string_view query = context.QueryText;
  size_t fault = 0;
  if (!Tokenise(query, context.Tokens, &fault)) {
    return FromFinding(query, LexicalFinding(query, fault));
  }
  if (context.Tokens.empty()) return FromFinding(query, EmptyTextFinding(query));
  CChart chart(context);
  ParseTree tree;
  if (chart.Parse(tree)) {
    auto finding = FindInGoodText(context);
    if (!finding) return std::nullopt;
    return FromFinding(query, std::move(*finding));
  }
  if (context.Message->SystemError == kErrorCancelled) return std::nullopt;
  CFailedText failed(context, chart);
  Diagnosis diagnosis = FromFinding(query, FindFault(failed));
  diagnosis.expected = failed.Expected().Texts();
  return diagnosis;
}

}  // namespace kestra
