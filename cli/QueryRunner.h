// CQueryRunner: runs one query after the other in a session, and shows what comes of each: results
// on standard output, errors and all else on standard error.
#pragma once

#include <string_view>

#include "cli/Handles.h"
#include "cli/Settings.h"
#include "cli/render/Output.h"

namespace kestra::cli {

// One thread. The session and the settings are the caller's and outlive the object; settings may
// change between two queries.
class CQueryRunner {
 public:
  CQueryRunner(kestra_session* session, const Settings& settings)
      : m_session(session), m_settings(settings) {}

  // Answers an exit status: kExitResult, kExitError, or kExitCancelled when the interrupt key ended
  // the query. Throws COutputError, CInterfaceError and std::bad_alloc.
  int Run(std::string_view query);
  // Whether the text parses; says nothing.
  bool IsGood(std::string_view query);

 private:
  CValueHandle Evaluate(std::string_view query, bool& wasInterrupted);
  RenderOptions HowToRender() const;

  kestra_session* const m_session;
  const Settings& m_settings;
  CFileOutput m_output{stdout, "standard output"};
  bool m_isFirst = true;
};

}  // namespace kestra::cli
