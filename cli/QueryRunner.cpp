#include "cli/QueryRunner.h"

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "cli/Options.h"
#include "cli/Terminal.h"
#include "cli/messages/ErrorText.h"
#include "cli/messages/ProgressLine.h"
#include "cli/messages/Statistics.h"
#include "cli/render/Render.h"

namespace kestra::cli {
namespace {

std::vector<std::string> ColumnNames(kestra_session* session) {
  std::vector<std::string> names;
  const auto columns = Take<CColumnsHandle>(kestra_session_columns, session);
  const int32_t count = Ask<int32_t>(kestra_columns_count, columns.get());
  for (int32_t i = 0; i < count; ++i) {
    names.emplace_back(Ask<const char*>(kestra_columns_name, columns.get(), i));
  }
  return names;
}

// Where nothing, or a heading alone, is shown to somebody, it is said that this is all.
void TellRowCounts(const RowCounts& rows, bool isVector, const COutput& output) {
  if (isVector && rows.total == 0 && output.IsTerminal()) std::fputs("kestra: no rows\n", stderr);
  if (rows.shown == rows.total) return;
  std::fprintf(stderr, "kestra: %d of %d rows shown\n", static_cast<int>(rows.shown),
               static_cast<int>(rows.total));
}

RenderOptions Unsorted(RenderOptions how) {
  how.rows.sort.reset();
  return how;
}

}  // namespace

RenderOptions CQueryRunner::HowToRender() const {
  const bool isTerminal = m_output.IsTerminal();
  const Format byDefault = isTerminal ? Format::Table : Format::Text;
  const size_t width = isTerminal && !m_settings.isWide ? TerminalWidth() : 0;
  // Who asks for a table gets one.
  const bool turnsVertical = !m_settings.format;
  return {m_settings.format.value_or(byDefault), width, turnsVertical, m_settings.rows};
}

CValueHandle CQueryRunner::Evaluate(std::string_view query, const CCancellation& cancellation) {
  const CProgressLine progress(m_session, cancellation);
  auto value = Take<CValueHandle>(kestra_session_run_query_sync_n, m_session, query.data(),
                                  query.size(), cancellation.Event(), m_settings.timeOut);
  if (!value) throw CInterfaceError(KESTRA_E_FAIL);
  return value;
}

int CQueryRunner::Run(const QueryPiece& query) {
  CCancellation cancellation;
  CValueHandle value;
  {
    const CInterruptScope interrupt(cancellation, CInterruptScope::Second::EndsTheProcess);
    value = Evaluate(query.text, cancellation);
  }
  const int status = Show(query, value.get());
  return status != kExitUsage && cancellation.WasCancelled() ? kExitCancelled : status;
}

int CQueryRunner::Run(const QueryPiece& query, const CCancellation& cancellation,
                      CValueHandle& result) {
  CValueHandle value = Evaluate(query.text, cancellation);
  if (cancellation.IsGivenUp()) return kExitCancelled;
  const int status = Show(query, value.get(), &cancellation);
  if (status != kExitError) result = std::move(value);
  return cancellation.WasCancelled() ? kExitCancelled : status;
}

int CQueryRunner::Show(const QueryPiece& query, kestra_value* value,
                       const CCancellation* pCancellation) {
  // The first line of standard error is an Error's.
  if (Is(kestra_value_is_error, value)) {
    m_output.Flush();
    TellError(m_session, query, value, m_settings);
    TellNotices(m_session);
    TellWhatHappened(m_session, value, m_settings);
    return kExitError;
  }
  TellNotices(m_session);
  RenderOptions how = HowToRender();
  how.rows.pCancellation = pCancellation;
  if (!m_isFirst) RenderSeparator(how, m_output);
  m_isFirst = false;
  RowCounts rows;
  try {
    rows = Render(value, ColumnNames(m_session), how, m_output);
  } catch (const CUnknownColumn& error) {
    std::fprintf(stderr, "kestra: %s\n", error.what());
    if (!m_settings.showsUnsorted) return kExitUsage;
    rows = Render(value, ColumnNames(m_session), Unsorted(how), m_output);
  }
  m_output.Flush();
  TellRowCounts(rows, Is(kestra_value_is_vector, value), m_output);
  TellDoubts(m_session, query, value);
  TellWhatHappened(m_session, value, m_settings);
  return kExitResult;
}

int CQueryRunner::Explain(const QueryPiece& query) {
  const char* plan = nullptr;
  const kestra_status status =
      kestra_session_explain(m_session, query.text.data(), query.text.size(), &plan);
  if (status == KESTRA_E_INVALIDARG) {
    // It is parsed again, for its Error.
    constexpr uint32_t kParseOnly = 0;
    const auto value =
        Take<CValueHandle>(kestra_session_run_query_sync_n, m_session, query.text.data(),
                           query.text.size(), nullptr, kParseOnly);
    return Show(query, value.get());
  }
  Check(status);
  m_output.Write(plan);
  m_output.Flush();
  return kExitResult;
}

bool CQueryRunner::IsGood(std::string_view query) {
  return Ask<int32_t>(kestra_session_check_query_syntax, m_session, query.data(), query.size()) !=
         0;
}

}  // namespace kestra::cli
