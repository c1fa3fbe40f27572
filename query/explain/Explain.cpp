#include "query/explain/Explain.h"

#include "query/Evaluate.h"
#include "query/explain/PlanWriter.h"
#include "query/parse/Predicates.h"
#include "query/parse/chart/Chart.h"

namespace kestra {

bool ExplainQuery(const std::string& text, const Ref<DiagRoot>& root, std::string& plan) {
  QueryContext context(text, root, kNoTimeOut, nullptr);
  ParseTree tree;
  if (!Tokenise(context.QueryText, context.Tokens) || !ParseTokens(context, tree)) return false;
  CPlanWriter writer(context);
  writer.Write(*tree.Top());
  plan = writer.Take();
  return true;
}

}  // namespace kestra
