#include "cli/RunQueries.h"

#include <algorithm>
#include <cstdio>

#include "cli/Render.h"
#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

// Empty for an option that is not given.
std::string FullPathOf(const std::optional<std::string>& path) {
  return path ? FullPath(*path) : std::string();
}

CSessionHandle MakeSession(const Options& options) {
  kestra_options settings{};
  settings.struct_size = sizeof(settings);
  const std::string log = FullPathOf(options.logDirectory);
  const std::string cache = FullPathOf(options.cacheDirectory);
  if (!log.empty()) settings.log_directory = log.c_str();
  if (!cache.empty()) settings.cache_directory = cache.c_str();
  if (options.imageDirectory) settings.image_directory = options.imageDirectory->c_str();
  if (options.imageUser) settings.image_user = options.imageUser->c_str();
  auto session = Take<CSessionHandle>(kestra_session_create, &settings);
  if (!session) throw CUsageError(kestra_create_error());
  if (options.pluginsDirectory) {
    Check(kestra_session_set_plugins_dir(session.get(), options.pluginsDirectory->c_str()));
  }
  Check(kestra_session_allow_active(session.get(), options.allowActive ? 1 : 0));
  return session;
}

RenderOptions HowToRender(const Options& options) {
  const Format byDefault = IsTerminal(Stream::Out) ? Format::Table : Format::Text;
  return {options.format.value_or(byDefault), TerminalWidth()};
}

std::vector<std::string> ColumnNames(kestra_session* session) {
  std::vector<std::string> names;
  const auto columns = Take<CColumnsHandle>(kestra_session_columns, session);
  const int32_t count = Ask<int32_t>(kestra_columns_count, columns.get());
  for (int32_t i = 0; i < count; ++i) {
    names.emplace_back(Ask<const char*>(kestra_columns_name, columns.get(), i));
  }
  return names;
}

// An Error is told on one line, whatever is in its text.
std::string OneLine(std::string_view text) {
  std::string line(text);
  std::replace_if(
      line.begin(), line.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  return line;
}

void TellError(kestra_session* session, kestra_value* error) {
  const std::string text = OneLine(TextOf(error));
  std::fprintf(stderr, "%s\n", text.c_str());
  const std::string message = OneLine(Ask<const char*>(kestra_session_last_message, session));
  if (!message.empty() && text.find(message) == std::string::npos) {
    std::fprintf(stderr, "kestra: %s\n", message.c_str());
  }
}

// What there is to say of the machine, beside the answer.
void TellNotices(kestra_session* session) {
  const char* text = nullptr;
  while (kestra_session_next_notice(session, &text) == KESTRA_OK)
    std::fprintf(stderr, "kestra: %s\n", OneLine(text).c_str());
}

class CRunner {
 public:
  explicit CRunner(const Options& options)
      : m_options(options), m_render(HowToRender(options)), m_session(MakeSession(options)) {}

  int Run(std::string_view query) {
    bool wasInterrupted = false;
    const CValueHandle value = Evaluate(query, wasInterrupted);
    const bool isError = Is(kestra_value_is_error, value.get());
    // The first line of standard error is an Error's.
    if (!isError) TellNotices(m_session.get());
    if (isError) {
      m_output.Flush();
      TellError(m_session.get(), value.get());
      TellNotices(m_session.get());
      return wasInterrupted ? kExitCancelled : kExitError;
    }
    if (!m_isFirst) RenderSeparator(m_render, m_output);
    m_isFirst = false;
    Render(value.get(), ColumnNames(m_session.get()), m_render, m_output);
    m_output.Flush();
    return wasInterrupted ? kExitCancelled : kExitResult;
  }

  bool IsGood(std::string_view query) {
    return Ask<int32_t>(kestra_session_check_query_syntax, m_session.get(), query.data(),
                        query.size()) != 0;
  }

 private:
  CValueHandle Evaluate(std::string_view query, bool& wasInterrupted) {
    const CInterruptScope interrupt;
    auto value = Take<CValueHandle>(kestra_session_run_query_sync_n, m_session.get(), query.data(),
                                    query.size(), interrupt.Event(), m_options.timeOut);
    wasInterrupted = interrupt.WasInterrupted();
    if (!value) throw CInterfaceError(KESTRA_E_FAIL);
    return value;
  }

  const Options& m_options;
  const RenderOptions m_render;
  const CSessionHandle m_session;
  CFileOutput m_output{stdout, "standard output"};
  bool m_isFirst = true;
};

}  // namespace

int RunQueries(const Options& options, const std::vector<std::string_view>& queries) {
  CRunner runner(options);
  for (const std::string_view query : queries) {
    if (options.checkOnly) {
      if (!runner.IsGood(query)) return kExitError;
      continue;
    }
    const int status = runner.Run(query);
    if (status != kExitResult) return status;
  }
  return kExitResult;
}

}  // namespace kestra::cli
