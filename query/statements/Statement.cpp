#include "query/statements/Statement.h"

namespace kestra {

bool FailWithMessage(Value& out, ParseNode& node) {
  out.SetError(node.Context->Message->GetText());
  return false;
}

bool FailWithMessage(Value& out, ParseNode& node, uint32_t id,
                     std::initializer_list<std::string> inserts) {
  node.Context->Message->RaiseMessage(id, inserts);
  return FailWithMessage(out, node);
}

bool CountResult(Value& out, size_t count) {
  out.SetNumber(static_cast<int32_t>(count));
  return true;
}

std::string TextOf(ParseNode& node, size_t symbol) {
  Value text;
  return Child(node, text, symbol) && text.IsString() ? text.asString() : std::string();
}

bool ReadRows(Value& out, ParseNode& node, size_t fromSymbol, const std::string& alias,
              Value& fromResult) {
  if (!Child(node, fromResult, fromSymbol)) {
    out = std::move(fromResult);
    return FailKeepingMessage(out);
  }
  return RowsOf(out, fromResult, alias);
}

}  // namespace kestra
