// CREATE PROCEDURE: gives the answer of a batch a name. Nothing is kept after the query.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {

// A batch that fails is an answer like any other, so that the next procedure still runs.
bool DefineProcedure(Value& out, ParseNode& node) {
  auto pair = MakeRef<ValueVector>();
  if (!Child(node, out, 2)) return FailKeepingMessage(out);
  pair->Append(std::move(out));
  QueryMessage& message = *node.Context->Message;
  message.ClearState();
  try {
    Child(node, out, 4);  // what it leaves is the answer, whether it failed or not
  } catch (...) {
    out.SetError("Unknown error");
  }
  if (message.IsTerminated()) return Fail(out);  // of a cancelled query no further one runs
  pair->Append(std::move(out));
  out.SetVector(std::move(pair));
  return true;
}

}  // namespace kestra
