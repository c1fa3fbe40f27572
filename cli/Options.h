// The command line.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "cli/Settings.h"

namespace kestra::cli {

inline constexpr int kExitResult = 0;
inline constexpr int kExitError = 1;
inline constexpr int kExitUsage = 2;
inline constexpr int kExitCancelled = 130;

struct Options {
  std::optional<std::string> query;
  std::optional<std::string> file;  // "-" is standard input
  std::optional<std::string> logDirectory;
  std::optional<std::string> pluginsDirectory;
  std::optional<std::string> cacheDirectory;
  std::optional<std::string> imageDirectory;  // nothing: this machine
  std::optional<std::string> imageUser;
  bool checkOnly = false;
  bool explainOnly = false;
  Settings settings;
};

// words is the command line, the program's name first. Answers an exit status when the process is
// to end now: after --help and --version, whose text is then written, and after wrong usage, which
// is then told on standard error. Throws COutputError.
std::optional<int> ParseOptions(const std::vector<std::string>& words, Options& options);

// What to say when there is nothing to run.
void PrintShortHelp();

}  // namespace kestra::cli
