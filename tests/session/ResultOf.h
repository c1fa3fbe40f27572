#pragma once

#include <string>

#include "front/session/SorrelCOM.h"

namespace kestra::test {

// What a query gives, as text: of a list "N rows", of dates and parameters "*".
inline std::string ResultOf(CSorrelCOM& session, const std::string& query) {
  QueryOutcome outcome;
  session.RunQuerySync(query, std::nullopt, kNoTimeOut, outcome);
  const Value& value = outcome.value;
  if (value.IsDatime() || value.Kind() == ValueKind::Parameter) return "*";
  return value.IsVector() ? std::to_string(value.asVector().Count()) + " rows" : value.asString();
}

}  // namespace kestra::test
