// QueryContext: the one object per running query.
#pragma once

#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "model/items/QueryMessage.h"
#include "model/root/Root.h"
#include "query/QueryReport.h"
#include "query/Stopwatch.h"
#include "query/Value.h"
#include "query/parse/Tokeniser.h"
#include "query/rows/report/SourceReports.h"

namespace kestra {

struct ParseNode;
class CPredicateCache;
class CRepeats;

// An alias and the row that it stands for now. The item is not counted: the entry never outlives
// the row that it was bound to.
struct ScopeEntry {
  std::string_view Alias;  // empty for none; lives in the source's rows
  CVDiagItem* Item;
};

// One thread, from parse to result.
struct QueryContext {
  QueryContext(std::string text, Ref<DiagRoot> root, uint32_t timeOut, Ref<QueryMessage> message);
  ~QueryContext();
  QueryContext(const QueryContext&) = delete;
  QueryContext& operator=(const QueryContext&) = delete;

  const std::string QueryText;
  const Ref<DiagRoot> Root;        // may be null: a text can be parsed without one
  const Ref<DiagClass> RootClass;  // its class tree, held for the query; null without a root
  const uint32_t TimeOut;          // milliseconds; 0: do not run
  const uint32_t StartTicks;
  const CStopwatch Watch;
  TokenList Tokens;
  std::vector<ScopeEntry> Scope;       // the aliases bound now; a stack
  std::deque<ParseNode*> FilterStack;  // the WHERE of each open FROM; null for none
  const Ref<QueryMessage> Message;
  const std::unique_ptr<CPredicateCache> Predicates;
  const std::unique_ptr<CRepeats> Repeats;
  // Whether indexes, compiled conditions and kept values may be used. The answers are the same
  // without, which tests make sure of.
  bool UsesShortcuts = true;
  QueryReport Report;
  CSourceReports Sources{Report};

  // Whether the query's time is over; out then becomes an Error without text.
  bool CheckTimeOut(Value& out) const;
  // Whether the query was cancelled; for loops, which look at every turn. It stays so: what fails
  // for it is asked again in another way now and then.
  bool IsCancelled() const {
    if (!m_wasCancelled) m_wasCancelled = Message->IsTerminatedInLoop();
    return m_wasCancelled;
  }

 private:
  mutable bool m_wasCancelled = false;
};

}  // namespace kestra
