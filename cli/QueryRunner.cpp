#include "cli/QueryRunner.h"

#include <cstdio>
#include <string>
#include <vector>

#include "cli/Options.h"
#include "cli/Terminal.h"
#include "cli/messages/ErrorText.h"
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

}  // namespace

RenderOptions CQueryRunner::HowToRender() const {
  const Format byDefault = IsTerminal(Stream::Out) ? Format::Table : Format::Text;
  return {m_settings.format.value_or(byDefault), TerminalWidth()};
}

CValueHandle CQueryRunner::Evaluate(std::string_view query, bool& wasInterrupted) {
  const CInterruptScope interrupt;
  auto value = Take<CValueHandle>(kestra_session_run_query_sync_n, m_session, query.data(),
                                  query.size(), interrupt.Event(), m_settings.timeOut);
  wasInterrupted = interrupt.WasInterrupted();
  if (!value) throw CInterfaceError(KESTRA_E_FAIL);
  return value;
}

int CQueryRunner::Run(std::string_view query) {
  bool wasInterrupted = false;
  const CValueHandle value = Evaluate(query, wasInterrupted);
  // The first line of standard error is an Error's.
  if (Is(kestra_value_is_error, value.get())) {
    m_output.Flush();
    TellError(m_session, query, value.get());
    TellNotices(m_session);
    return wasInterrupted ? kExitCancelled : kExitError;
  }
  TellNotices(m_session);
  const RenderOptions how = HowToRender();
  if (!m_isFirst) RenderSeparator(how, m_output);
  m_isFirst = false;
  Render(value.get(), ColumnNames(m_session), how, m_output);
  m_output.Flush();
  return wasInterrupted ? kExitCancelled : kExitResult;
}

bool CQueryRunner::IsGood(std::string_view query) {
  return Ask<int32_t>(kestra_session_check_query_syntax, m_session, query.data(), query.size()) !=
         0;
}

}  // namespace kestra::cli
