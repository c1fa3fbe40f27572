// Columns: which source of the query's own text a name belongs to, and so what type it has. The
// parser asks while it recognises the text; a name of the wrong type in a place is a syntax error.
#pragma once

#include <cstddef>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "query/QueryContext.h"
#include "query/parse/TokenMap.h"

namespace kestra {

// Pointers into the class tree that the query's context holds.
struct ColumnBinding {
  const DiagParamDef* pDef = nullptr;  // null: the name belongs to no source
  DiagClass* pClass = nullptr;         // the class that declares it
};

// Finds the columns of one query's text. One thread, and not longer than the context lives.
class CColumnSearch {
 public:
  explicit CColumnSearch(const QueryContext& context);

  // The column that the token at a position names. The sources are searched in this order: those
  // of the name's own select list to the right, then those to the left, which are the ones of
  // enclosing statements. The first that declares the name decides.
  ColumnBinding Resolve(size_t position);

  // A source that a name at that position would be looked for in.
  struct VisibleSource {
    DiagClass* pClass;
    std::string_view alias;  // the token where an alias would stand, whatever it is
  };
  // All of them, in the order of the search, whatever the token there is.
  std::vector<VisibleSource> SourcesFor(size_t position);

 private:
  using Place = std::ptrdiff_t;  // -1 stands before the first token

  // What stands behind a FROM, JOIN, UPDATE or DELETE, as far as names are concerned.
  struct Source {
    bool isKnown = false;
    Place alias = -1;             // where an alias would stand
    DiagClass* pClass = nullptr;  // null: no source of a class that there is
  };
  struct Name {
    std::string_view text;
    std::string_view alias;  // empty for none
  };

  bool IsInside(Place q) const { return q >= 0 && q < static_cast<Place>(m_tokens.size()); }
  KeywordId KeywordAt(Place q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].keyword : kNoKeyword;
  }
  std::string_view TextAt(Place q) const {
    return IsInside(q) ? m_tokens[static_cast<size_t>(q)].text : std::string_view();
  }
  bool SkipGroup(Place& m) const;
  DiagClass* FindSourceClass(Place k, Place c) const;
  const Source& SourceBehind(Place k);
  bool TrySource(Place k, const Name& name, ColumnBinding& found);
  // Calls visit with the keyword before each source, until it answers true. q stands before the
  // name and its alias. Sources that cannot have that name with that alias may be left out; an
  // empty one is any.
  template <class Visit>
  void VisitSources(Place q, const Name& name, Visit&& visit);
  const std::vector<Place>& SourcesNamed(std::string_view alias);
  // Whether the class of any FROM or JOIN declares the name.
  bool IsDeclared(std::string_view name);
  void IndexSources();

  const TokenList& m_tokens;
  const Ref<DiagClass> m_poRootClass;
  const CTokenMap m_map;
  std::vector<Source> m_sources;  // by the keyword's place
  // Of a text of many sources: the places of FROM and JOIN, rising, by the alias behind them, and
  // the classes.
  bool m_isIndexed = false;
  std::unordered_map<std::string_view, std::vector<Place>> m_byAlias;
  std::unordered_set<const DiagClass*> m_classes;
};

}  // namespace kestra
