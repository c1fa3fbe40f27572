#include "cli/shell/ShellCore.h"

#include <cstdio>
#include <exception>

#include "cli/QueryRunner.h"
#include "cli/Terminal.h"
#include "cli/shell/ShellOutput.h"

namespace kestra::cli {
namespace {

ShellTarget StandardOutput() {
  return {{stdout, [](std::FILE*) {}}, "standard output", IsTerminal(Stream::Out)};
}

// Behind blanks there is nothing to be wrong with.
bool IsAtEnd(const std::string& text, size_t offset) {
  return text.find_last_not_of(" \t\r\n") == std::string::npos ||
         offset > text.find_last_not_of(" \t\r\n");
}

TextState JudgeIn(kestra_session* session, const std::string& text) {
  if (Ask<int32_t>(kestra_session_check_query_syntax, session, text.data(), text.size()) != 0) {
    return TextState::Whole;
  }
  const auto diagnosis =
      Take<CDiagnosisHandle>(kestra_session_diagnose, session, text.data(), text.size());
  if (!diagnosis) return TextState::Wrong;
  size_t offset = 0;
  Check(kestra_diagnosis_place(diagnosis.get(), &offset, nullptr, nullptr, nullptr));
  return IsAtEnd(text, offset) ? TextState::Unfinished : TextState::Wrong;
}

}  // namespace

void Tell(const std::string& sentence) {
  std::fflush(stdout);
  std::fprintf(stderr, "kestra: %s\n", sentence.c_str());
}

CShellCore::CShellCore(const Options& options)
    : m_options(options),
      m_target(StandardOutput()),
      m_session(std::make_unique<CSessionThread>(options)) {
  // The order stands for many queries, and not each has the column.
  m_options.settings.showsUnsorted = true;
  m_options.settings.place = Place::Shell;
}

CShellCore::~CShellCore() = default;

void CShellCore::Renew() {
  m_session = std::make_unique<CSessionThread>(m_options);
}

bool CShellCore::Run(ShellJob job) {
  try {
    if (m_session->Run(std::move(job))) return true;
    Tell("this does not end: it is left behind, and a new session begins");
    Renew();
  } catch (const CCancelled&) {
    Tell("cancelled");
  } catch (const std::bad_alloc&) {
    Tell("out of memory");
  } catch (const std::exception& error) {
    Tell(error.what());
  }
  return false;
}

// A session that is left behind goes on reading the text.
bool CShellCore::RunQuery(const std::shared_ptr<const std::string>& text, const QueryPiece& query) {
  const auto status = std::make_shared<int>(kExitError);
  const bool hasRun = Run([text, query, settings = CurrentSettings(), target = m_target, status](
                              ShellSession& session, const CCancellation& cancellation) {
    CShellOutput output(target, cancellation);
    CQueryRunner runner(session.handle.get(), settings, output);
    *status = runner.Run(query, cancellation, session.lastResult);
  });
  return hasRun && *status == kExitResult;
}

bool CShellCore::RunQueries(const std::string& text, int32_t firstLine) {
  const auto whole = std::make_shared<const std::string>(text);
  for (const std::string_view query : SplitQueries(*whole)) {
    if (!RunQuery(whole, {query, *whole, firstLine})) return false;
  }
  return true;
}

TextState CShellCore::Judge(const std::string& text) {
  const auto state = std::make_shared<TextState>(TextState::Wrong);
  Run([text, state](ShellSession& session, const CCancellation&) {
    *state = JudgeIn(session.handle.get(), text);
  });
  return *state;
}

void CShellCore::Print(const std::string& text) {
  std::FILE* const pFile = m_target.file.get();
  if (std::fwrite(text.data(), 1, text.size(), pFile) != text.size() || std::fflush(pFile) != 0) {
    Tell(m_target.name + ": could not be written");
  }
}

bool CShellCore::SetTarget(const std::string& path) {
  if (path.empty()) {
    m_target = StandardOutput();
    return true;
  }
  std::FILE* const pFile = OpenForWriting(path);
  if (!pFile) return false;
  m_target = {{pFile, [](std::FILE* pOpen) { std::fclose(pOpen); }}, path, false};
  return true;
}

}  // namespace kestra::cli
