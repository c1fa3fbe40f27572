// CALLDLL and CALLDLLV. The texts parse; there is no loader for libraries yet, so a call ends as
// one whose library cannot be found: an Error without text.
#include "query/eval/Actions.h"
#include "query/eval/Operands.h"

namespace kestra {

bool CallDll(Value& out, ParseNode&) { return Fail(out); }
bool CallDllV(Value& out, ParseNode&) { return Fail(out); }

}  // namespace kestra
