// A text that does not parse, as the rules look at it.
#pragma once

#include <vector>

#include "query/diagnose/Expected.h"
#include "query/diagnose/SourceScan.h"
#include "query/diagnose/rules/Finding.h"
#include "query/parse/Columns.h"

namespace kestra {

// One thread; not longer than the context lives.
class CFailedText {
 public:
  CFailedText(QueryContext& context, const CChart& chart);

  // The token that nothing could make use of; the number of tokens for the end of the text.
  size_t Stop() const { return m_stop; }
  // The token that is to blame. It is the one before where a name could only be taken for an alias
  // because it is no column that fits.
  size_t Position() const { return m_position; }
  const CExpected& Expected() const { return m_expected; }  // at Position()
  const CExpected& ExpectedAtStop() const { return m_expectedAtStop; }

  size_t Count() const { return m_context.Tokens.size(); }
  const TokenList& Tokens() const { return m_context.Tokens; }
  const std::string& Query() const { return m_context.QueryText; }
  DiagClass* RootClass() const { return m_context.RootClass.get(); }
  // Places outside have an empty text, kNoToken among them.
  std::string_view Text(size_t i) const;
  KeywordId KeywordAt(size_t i) const;
  bool Is(size_t i, std::string_view word) const;  // in any case
  bool IsWord(size_t i) const;                     // begins like a name
  bool IsInteger(size_t i) const;                  // digits alone
  bool IsString(size_t i) const;
  // A word of clauses and conditions, which nobody means for a column where one is wanted.
  bool IsClauseWord(size_t i) const;
  bool IsComparison(size_t i) const;  // an operator, LIKE or IN behind which a value stands
  // Whether nothing stands between the tokens from first to last.
  bool AreJoined(size_t first, size_t last) const;
  // Whether what stands behind a token is the whole left side of a comparison, if it is one token.
  bool IsBeforeOperand(size_t i) const;
  // What stands without a blank from a token on, up to a comma or parenthesis; one who forgot the
  // quotes meant all of it.
  size_t EndOfRunAt(size_t i) const;  // its last token
  std::string_view RunAt(size_t i) const;
  size_t OffsetOf(size_t i) const;  // of a token's first byte; behind the last token at the end

  const std::vector<QuerySource>& Sources() const { return m_sources; }
  // The source that has its alias at a token; null if there is none.
  const QuerySource* SourceWithAliasAt(size_t i) const;
  const ColumnBinding& Column(size_t i);
  std::vector<CColumnSearch::VisibleSource> SourcesFor(size_t i);
  // Whether Position() is a word where a column might stand, and no source declares it.
  bool IsUnknownName();

  // Writes a finding about the tokens from first to last, or about the end of the text.
  bool Say(Finding& finding, size_t first, size_t last, std::string message,
           std::vector<std::string> suggestions = {}) const;
  bool Say(Finding& finding, size_t token, std::string message,
           std::vector<std::string> suggestions = {}) const {
    return Say(finding, token, token, std::move(message), std::move(suggestions));
  }

 private:
  static size_t PlaceToBlame(const CChart& chart, const CExpected& atStop);

  QueryContext& m_context;
  const size_t m_stop;
  const CExpected m_expectedAtStop;
  const size_t m_position;
  const CExpected m_expected;
  const std::vector<QuerySource> m_sources;
};

// Says what is wrong, if it knows.
using FailureRule = bool (*)(CFailedText& text, Finding& finding);

}  // namespace kestra
