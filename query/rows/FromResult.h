// FromResult: what a FROM clause gives: a Vector of [alias, rows], one per source in the order of
// the text, where the rows of all sources are equally many and row r is the r-th of each. It may be
// Any (undecided) or Undefined instead.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "query/Value.h"
#include "query/parse/ParseTree.h"

namespace kestra {

// One source's rows: an alias (empty for none) and items.
struct SourceRows {
  std::string_view alias;
  ValueVector* pRows;
};

// Reads a FromResult, which must outlive the reader.
class CFromReader {
 public:
  explicit CFromReader(const Value& fromResult);
  // False for a value that is no FromResult.
  bool IsValid() const { return m_isValid; }
  size_t SourceCount() const { return m_sources.size(); }
  const SourceRows& Source(size_t i) const { return m_sources[i]; }
  // Of the first source.
  size_t RowCount() const { return m_sources.empty() ? 0 : m_sources[0].pRows->Count(); }
  // The index of the source with exactly that alias; SourceCount() for none.
  size_t FindAlias(std::string_view alias) const;

  // Puts row r of every source on the scope, in order, and takes them off again.
  void BindRow(QueryContext& context, size_t r) const;
  void UnbindRow(QueryContext& context) const;

 private:
  std::vector<SourceRows> m_sources;
  bool m_isValid = false;
};

// Binds a row for a scope.
class CBoundRow {
 public:
  CBoundRow(const CFromReader& reader, QueryContext& context, size_t r)
      : m_reader(reader), m_context(context) {
    m_reader.BindRow(m_context, r);
  }
  ~CBoundRow() { m_reader.UnbindRow(m_context); }
  CBoundRow(const CBoundRow&) = delete;
  CBoundRow& operator=(const CBoundRow&) = delete;

 private:
  const CFromReader& m_reader;
  QueryContext& m_context;
};

// Evaluates a symbol of node with row r bound.
bool EvalOnRow(Value& out, size_t r, const CFromReader& reader, ParseNode& node, size_t symbol);

// [alias, rows] appended to a FromResult under construction.
void AppendSource(ValueVector& fromResult, std::string alias, Value rows);

// The rows of a source as a Vector of items: the one with that alias, or without an alias the only
// one. Otherwise an Error without text.
bool RowsOf(Value& out, const Value& fromResult, std::string_view alias);

// Whether the rows of a FROM clause's body are counted and nothing else: they are left NULL then.
bool IsOnlyCounted(const ParseNode& body);

// The WHERE that is open while the sources of its clause run: null for the empty form.
ParseNode* OpenFilterOf(ParseNode* pWhere);

// Keeps a WHERE open while the sources of its clause run. where is the node of an OptWhere or of
// what it handed on; the empty form opens none.
class CFilterScope {
 public:
  CFilterScope(QueryContext& context, ParseNode* pWhere);
  ~CFilterScope() { m_context.FilterStack.pop_back(); }
  CFilterScope(const CFilterScope&) = delete;
  CFilterScope& operator=(const CFilterScope&) = delete;

 private:
  QueryContext& m_context;
};

// Binds one item for a scope.
class CBoundItem {
 public:
  CBoundItem(QueryContext& context, std::string_view alias, CVDiagItem& item) : m_context(context) {
    m_context.Scope.push_back({alias, &item});
  }
  ~CBoundItem() { m_context.Scope.pop_back(); }
  CBoundItem(const CBoundItem&) = delete;
  CBoundItem& operator=(const CBoundItem&) = delete;

 private:
  QueryContext& m_context;
};

// Tests the WHERE that is open now against what is bound. False for a failure; passes tells
// whether the row stays, and decided becomes false when that is not known yet.
bool TestFilter(ParseNode* pFilter, bool& passes, bool& decided);

}  // namespace kestra
