// The terminal predicates: symbols of the grammar that look at a token, at the tokens around it,
// and at the classes that exist. They make the grammar depend on the modules.
//
// A predicate depends on its arguments alone, so what it said of a position is kept for the query.
#pragma once

#include <memory>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/Columns.h"
#include "query/parse/Grammar.h"

namespace kestra {

// Whether the token at that position fits. out then has its value, and is an Error without text
// otherwise.
bool RunPredicate(Predicate predicate, Value& out, QueryContext& context, size_t position);

// What the predicates said, by position.
class CPredicateCache {
 public:
  explicit CPredicateCache(QueryContext& context) : m_context(context) {}

  // From here on a word that no source declares passes for a column of every type, and WHERE and
  // its like are no aliases: for a text that is still being written, whose sources come later.
  void AssumeColumns() { m_assumesColumns = true; }

  // The same verdict without the value.
  bool Fits(Predicate predicate, size_t position) {
    return FitsOf(PredicateBit(predicate), position) != 0;
  }
  // Those of a set of predicates that the token fits.
  uint32_t FitsOf(uint32_t predicates, size_t position) {
    const uint32_t unknown = predicates & ~At(position).known;
    if (unknown != 0) Learn(unknown, position);
    return At(position).fits & predicates;
  }
  // The column that the token names, whatever its type.
  const ColumnBinding& Column(size_t position);
  // The classes that a name there is looked for in.
  CColumnSearch& Search();

 private:
  struct Verdicts {
    uint32_t known = 0;
    uint32_t fits = 0;
    uint32_t column = 0;  // index into m_columns, counted from 1
  };
  Verdicts& At(size_t position) {
    if (m_verdicts.empty()) m_verdicts.resize(m_context.Tokens.size());
    return m_verdicts[position];
  }
  void Learn(uint32_t predicates, size_t position);
  bool Test(Predicate predicate, size_t position);

  bool m_assumesColumns = false;
  QueryContext& m_context;
  std::vector<Verdicts> m_verdicts;
  std::vector<ColumnBinding> m_columns;
  std::unique_ptr<CColumnSearch> m_pSearch;  // made at the first column
};

}  // namespace kestra
