// EvaluateQuery: the single entry to the query engine.
#pragma once

#include <cstdint>
#include <string>

#include "model/items/QueryMessage.h"
#include "model/root/Root.h"
#include "query/QueryReport.h"
#include "query/Value.h"

namespace kestra {

inline constexpr uint32_t kNoTimeOut = 0xFFFFFFFF;

// Parses text and runs it over root. out is always filled, and nothing is thrown:
// - an Error "Syntax error" for a text that does not parse;
// - Undefined for one that does, with a timeOut of 0: it is then not run;
// - an Error "Diagnostics initialization error" when the root cannot be filled;
// - an Error without text when the time is over or the query was cancelled; a statement that was
//   changing something then gives the sentence of the cancel;
// - otherwise the query's value. The items in it stay alive and are not copied.
// timeOut is in milliseconds. A null message stands for one without termination event and without
// the right to change anything. pReport may be null. Any number of threads may run queries over one
// root.
void EvaluateQuery(Value& out, const std::string& text, const Ref<DiagRoot>& root, uint32_t timeOut,
                   Ref<QueryMessage> message, QueryReport* pReport = nullptr);

}  // namespace kestra
