// CQueryRunner: runs one query after the other in a session, and shows what comes of each: results
// on standard output, errors and all else on standard error.
#pragma once

#include <string_view>

#include "cli/Handles.h"
#include "cli/Interrupt.h"
#include "cli/QueryText.h"
#include "cli/Settings.h"
#include "cli/render/Output.h"

namespace kestra::cli {

// One thread. What it is made of is the caller's and outlives the object; settings may change
// between two queries.
class CQueryRunner {
 public:
  CQueryRunner(kestra_session* session, const Settings& settings, COutput& output)
      : m_session(session), m_settings(settings), m_output(output) {}

  // Answers an exit status: kExitResult, kExitError, kExitUsage for a column to sort by that the
  // result does not have, or kExitCancelled when the interrupt key ended the query. Throws
  // COutputError, CInterfaceError and std::bad_alloc.
  int Run(const QueryPiece& query);
  // The same with somebody else to look after the interrupt key. result gets what was shown, unless
  // that was an Error. Throws CCancelled too.
  int Run(const QueryPiece& query, const CCancellation& cancellation, CValueHandle& result);
  // Writes how the query would be run, instead of running it. For a text that does not parse the
  // Error is told, and the answer kExitError.
  int Explain(const QueryPiece& query);
  // Whether the text parses; says nothing.
  bool IsGood(std::string_view query);

 private:
  CValueHandle Evaluate(std::string_view query, const CCancellation& cancellation);
  // pCancellation, if not null, breaks off the showing: CCancelled.
  int Show(const QueryPiece& query, kestra_value* value,
           const CCancellation* pCancellation = nullptr);
  RenderOptions HowToRender() const;

  kestra_session* const m_session;
  const Settings& m_settings;
  COutput& m_output;
  bool m_isFirst = true;
};

}  // namespace kestra::cli
