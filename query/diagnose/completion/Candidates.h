// What may stand at the cursor, by kind.
#pragma once

#include <string_view>
#include <vector>

#include "query/QueryContext.h"
#include "query/diagnose/Completion.h"
#include "query/diagnose/Expected.h"
#include "query/diagnose/SourceScan.h"

namespace kestra {

// One thread; not longer than the context lives.
class CCandidates {
 public:
  // place is the token that stands for the word that is begun.
  CCandidates(QueryContext& context, const CExpected& expected, size_t place);

  void AddAll(std::vector<Completion>& entries);
  // Texts alone, for a string that is begun.
  void AddOptions(std::vector<Completion>& entries);

 private:
  KeywordId KeywordAt(size_t i) const {
    return i < m_tokens.size() ? m_tokens[i].keyword : kNoKeyword;
  }
  std::string_view TextAt(size_t i) const {
    return i < m_tokens.size() ? m_tokens[i].text : std::string_view();
  }
  void AddKeywords(std::vector<Completion>& entries) const;
  void AddModules(std::vector<Completion>& entries) const;
  void AddClasses(std::vector<Completion>& entries) const;
  void AddColumns(std::vector<Completion>& entries);
  void AddColumnsOfAnyClass(std::vector<Completion>& entries) const;
  void AddAliases(std::vector<Completion>& entries);
  void AddArguments(std::vector<Completion>& entries) const;
  void AddTargetColumns(std::vector<Completion>& entries) const;
  void AddActions(std::vector<Completion>& entries) const;

  bool Fits(const DiagParamDef& def) const;
  bool IsSelectWithoutSource() const;
  bool HasSourceBehind(size_t groups) const;
  size_t OpenBefore(size_t i) const;
  const QuerySource* SourceWithArgumentsAt(size_t open) const;
  const DiagParamDef* ComparedWith();
  const DiagClass* UpdatedClass() const;
  const DiagClass* ActedOnClass() const;
  const DiagAction* GivenAction() const;

  QueryContext& m_context;
  const TokenList& m_tokens;
  const CExpected& m_expected;
  const size_t m_place;
  const std::vector<QuerySource> m_sources;
  const size_t m_open;  // the parenthesis that is open around the place; kNoToken for none
};

}  // namespace kestra
