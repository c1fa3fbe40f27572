#include "query/Evaluate.h"

#include <new>

#include "platform/machine/Machine.h"
#include "platform/os/Clock.h"
#include "platform/os/CurrentTermination.h"
#include "query/parse/ColumnNames.h"
#include "query/parse/ParseTree.h"
#include "query/parse/Predicates.h"
#include "query/parse/chart/Chart.h"
#include "query/rows/repeated/Repeats.h"

namespace kestra {
namespace {

void RunTree(Value& out, ParseTree& tree, QueryContext& context) {
  if (!context.Root ||
      !static_cast<CVDiagItem&>(*context.Root).Init(false, false, *context.Message)) {
    if (context.Message->SystemError == kErrorCancelled) return out.SetError();
    out.SetError("Diagnostics initialization error");
    return;
  }
  if (!RunNode(*tree.Top(), out) && !out.IsError()) out.SetError("Unknown error");
}

void Evaluate(Value& out, QueryContext& context) {
  ParseTree tree;
  const bool isGood = Tokenise(context.QueryText, context.Tokens) && ParseTokens(context, tree);
  context.Report.parseMicroseconds = context.Watch.Microseconds();
  if (isGood) {
    context.Report.columns = ColumnNames(*tree.Top());
    if (context.TimeOut != 0) RunTree(out, tree, context);
  } else if (context.Message->SystemError == kErrorCancelled) {
    out.SetError();  // cut off while parsing: nobody knows whether the text is good
  } else {
    out.SetError("Syntax error");
  }
}

// For what is caught; there may be no memory left for the sentence.
void SetUnknownError(Value& out) {
  try {
    out.SetError("Unknown error");
  } catch (const std::bad_alloc&) {
    out.SetError();
  }
}

// Hands out what happened, however the query ends.
class CReportAtEnd {
 public:
  CReportAtEnd(QueryContext& context, QueryReport* pReport)
      : m_context(context), m_pReport(pReport) {}
  ~CReportAtEnd() {
    if (!m_pReport) return;
    m_context.Report.totalMicroseconds = m_context.Watch.Microseconds();
    *m_pReport = std::move(m_context.Report);
  }
  CReportAtEnd(const CReportAtEnd&) = delete;
  CReportAtEnd& operator=(const CReportAtEnd&) = delete;

 private:
  QueryContext& m_context;
  QueryReport* const m_pReport;
};

}  // namespace

QueryContext::QueryContext(std::string text, Ref<DiagRoot> root, uint32_t timeOut,
                           Ref<QueryMessage> message)
    : QueryText(std::move(text)),
      Root(std::move(root)),
      RootClass(Root ? Root->GetTypeInfo() : nullptr),
      TimeOut(timeOut),
      StartTicks(os::TickCount()),
      Message(message ? std::move(message) : MakeRef<QueryMessage>()),
      Predicates(std::make_unique<CPredicateCache>(*this)),
      Repeats(std::make_unique<CRepeats>()) {}

QueryContext::~QueryContext() = default;

bool QueryContext::CheckTimeOut(Value& out) const {
  if (TimeOut == kNoTimeOut) return false;
  if (os::TickCount() - StartTicks < TimeOut) return false;
  out.SetError();
  return true;
}

void EvaluateQuery(Value& out, const std::string& text, const Ref<DiagRoot>& root, uint32_t timeOut,
                   Ref<QueryMessage> message, QueryReport* pReport) {
  Value result;
  try {
    QueryContext context(text, root, timeOut, std::move(message));
    const CReportAtEnd report(context, pReport);
    const os::CTerminationScope scope(context.Message->TerminationEvent());
    context.Message->ClearState();
    context.Message->IsMachineReadOnly = root && root->Machine() && root->Machine()->IsReadOnly();
    Evaluate(result, context);
  } catch (...) {
    SetUnknownError(result);
  }
  out = std::move(result);
}

}  // namespace kestra
