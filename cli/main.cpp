// The command "kestra".
#include <cstdio>
#include <cstdlib>
#include <exception>

#include "cli/Options.h"
#include "cli/QueryRunner.h"
#include "cli/QueryText.h"
#include "cli/Session.h"
#include "cli/Terminal.h"
#include "cli/shell/Shell.h"

namespace kestra::cli {
namespace {

int RunShell(const Options& options) {
  int status = kExitError;
  {
    CShell shell(options);
    status = shell.Run();
  }
  if (!CSessionThread::IsAnyLeftBehind()) return status;
  // What such a thread uses must stay until the process is gone.
  std::fflush(stdout);
  std::_Exit(status);
}

// Answers an exit status if there is no text to run.
std::optional<int> FindQueryText(const Options& options, std::string& text) {
  if (options.query) {
    text = *options.query;
    return std::nullopt;
  }
  if (!options.file && IsTerminal(Stream::In)) {
    PrintShortHelp();
    return kExitUsage;
  }
  try {
    text = ReadQueryFile(options.file.value_or("-"));
  } catch (const std::runtime_error& error) {
    std::fprintf(stderr, "kestra: %s\n", error.what());
    return kExitUsage;
  }
  return std::nullopt;
}

// One after the other; the first Error ends it.
int RunQueries(const Options& options, std::string_view text) {
  std::vector<std::string_view> queries = SplitQueries(text);
  // A file may be empty; a query that was asked for and is not there is a fault, told by the
  // engine.
  if (queries.empty() && options.query) queries.push_back(text);
  const CSessionHandle session = MakeSession(options);
  CFileOutput output(stdout, "standard output", IsTerminal(Stream::Out));
  CQueryRunner runner(session.get(), options.settings, output);
  for (const std::string_view queryText : queries) {
    const QueryPiece query(queryText, text);
    if (options.checkOnly) {
      if (!runner.IsGood(queryText)) return kExitError;
      continue;
    }
    const int status = options.explainOnly ? runner.Explain(query) : runner.Run(query);
    if (status != kExitResult) return status;
  }
  return kExitResult;
}

bool IsForShell(const Options& options) {
  return !options.query && !options.file && !options.checkOnly && !options.explainOnly &&
         IsTerminal(Stream::In);
}

int Run(const std::vector<std::string>& words) {
  Options options;
  if (const auto status = ParseOptions(words, options)) return *status;
  if (IsForShell(options)) return RunShell(options);
  std::string text;
  if (const auto status = FindQueryText(options, text)) return *status;
  return RunQueries(options, text);
}

int RunBehindBarrier(int argc, char** argv) {
  try {
    return Run(CommandLine(argc, argv));
  } catch (const std::bad_alloc&) {
    std::fputs("kestra: out of memory\n", stderr);
  } catch (const CUsageError& error) {
    std::fprintf(stderr, "kestra: %s\n", error.what());
    return kExitUsage;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "kestra: %s\n", error.what());
  }
  return kExitError;
}

}  // namespace
}  // namespace kestra::cli

int main(int argc, char** argv) {
  kestra::cli::ReserveStandardStreams();
  kestra::cli::PrepareHeap();
  return kestra::cli::RunBehindBarrier(argc, argv);
}
