#include "cli/Options.h"

#include <CLI/CLI.hpp>

#include <charconv>
#include <iostream>
#include <limits>
#include <sstream>

#include "cli/NearNames.h"
#include "cli/Terminal.h"
#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr const char* kUsage = "kestra [options] [--] [QUERY]";
constexpr size_t kHelpWidth = 80;
constexpr size_t kHelpIndent = 24;

std::string CheckFormat(const std::string& name) {
  if (FormatFromName(name)) return {};
  return name + " is no format: choose " + FormatNames();
}

// Why a word is no such number; empty if it is one.
template <class Number>
std::string CheckNumber(const std::string& word) {
  Number number = 0;
  const char* const end = word.data() + word.size();
  const auto [read, error] = std::from_chars(word.data(), end, number);
  if (error == std::errc() && read == end && number >= 0) return {};
  return word + " is no number from 0 to " + std::to_string(std::numeric_limits<Number>::max());
}

std::string CheckDirectory(const std::string& path) {
  return IsDirectory(path) ? std::string() : "Directory does not exist: " + path;
}

class CHelpFormatter final : public CLI::Formatter {
 public:
  CHelpFormatter() { column_width(kHelpIndent); }
  std::string make_option_desc(const CLI::Option* pOption) const override {
    // The formatter indents the lines.
    return Wrapped(pOption->get_description(), kHelpWidth - kHelpIndent, 0);
  }
};

struct RawOptions {
  std::string query, file, format, logDirectory, pluginsDirectory, cacheDirectory, imageDirectory,
      imageUser, sort;
  int32_t limit = 0;
};

void DeclareOptions(CLI::App& app, RawOptions& raw, Options& options) {
  app.add_option("QUERY", raw.query, "The query, or several separated by \";\"")->option_text(" ");
  app.add_option("-f,--file", raw.file, "Take the query text from FILE (-: standard input)")
      ->option_text("FILE")
      ->excludes("QUERY");
  app.add_option("--format", raw.format,
                 "table (default on a terminal; vertical where none fits), vertical, text (default "
                 "otherwise, and for scripts), csv, json, jsonl or xml")
      ->option_text("FORMAT")
      ->check(CheckFormat);
  app.add_option("--sort", raw.sort,
                 "Show the rows by that column of the result; COLUMN:desc turns the order round")
      ->option_text("COLUMN");
  app.add_option("--limit", raw.limit, "Show that many rows at most")
      ->option_text("N")
      ->check(CheckNumber<int32_t>);
  app.add_flag("--wide", options.settings.isWide, "Do not cut tables to the terminal's width");
  app.add_flag("--active", options.settings.allowActive,
               "Allow statements that change the machine");
  app.add_option("--timeout", options.settings.timeOut,
                 "End a query after that many milliseconds; 0 parses only (default: no limit)")
      ->option_text("MS")
      ->check(CheckNumber<uint32_t>);
  app.add_flag("--stats", options.settings.showStatistics,
               "Tell on standard error what each query read, how long it took, and what could not "
               "be read");
  app.add_flag("--explain", options.explainOnly,
               "Print how the query would be run instead of running it")
      ->option_text(" ");
  app.add_flag("--check", options.checkOnly, "Look at the syntax only: exit with 0 or 1")
      ->option_text(" ")
      ->excludes("--explain");
  app.add_option("--log", raw.logDirectory, "Write the log into that directory")
      ->option_text("DIR")
      ->check(CheckDirectory);
  app.add_option("--image", raw.imageDirectory,
                 "Ask about the Windows system whose volume is in that directory (a mounted disk, "
                 "or a prefix of Wine), which is only read")
      ->option_text("DIR")
      ->check(CheckDirectory);
  app.add_option("--image-user", raw.imageUser,
                 "Whose registry HKCU is there: a user's name or SID (default: the only user)")
      ->option_text("NAME")
      ->needs("--image");
  app.add_option("--plugins", raw.pluginsDirectory,
                 "Add the modules of the plug-ins in that directory")
      ->excludes("--image")
      ->option_text("DIR")
      ->check(CheckDirectory);
  app.add_option("--cache", raw.cacheDirectory,
                 "Keep results in that directory, for queries that ask for it: FROM Processes#60")
      ->excludes("--image")
      ->option_text("DIR")
      ->check(CheckDirectory);
  app.set_version_flag("--version", std::string("kestra ") + kestra_version(),
                       "Print the version and exit");
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.footer(
      "Without QUERY, queries are read from a pipe; on a terminal there is a shell.\n\n"
      "Exit status: 0 a result; 1 the result is an Error; 2 wrong usage; 130 cancelled\n\n"
      "Example:\n"
      "  kestra \"SELECT PID, ImageName FROM Processes.Process WHERE MemoryUsage > 50000\"");
}

std::optional<std::string> ValueIfGiven(const CLI::App& app, const char* name,
                                        const std::string& value) {
  return app.count(name) != 0 ? std::optional(value) : std::nullopt;
}

// Why there are words that are no option and not the query.
std::string ExtraWordsText(const CLI::App& app) {
  for (const std::string& word : app.remaining()) {
    if (word.size() < 2 || word.front() != '-') continue;
    const std::string name = word.substr(0, word.find('='));
    std::vector<std::string> names;
    for (const CLI::Option* pOption : app.get_options()) {
      for (const std::string& known : pOption->get_lnames()) names.push_back("--" + known);
    }
    return "there is no option " + name + NearNamesSentence(name, names) +
           "\nkestra: a query that begins with \"-\" stands behind --";
  }
  return "the query is one argument: put it in quotes";
}

int TellParseError(const CLI::ParseError& error, const CLI::App& app) {
  if (error.get_exit_code() == 0) {
    std::ostringstream text;
    app.exit(error, text, text);
    CFileOutput output(stdout, "standard output");
    output.Write(text.str());
    output.Flush();
    return kExitResult;
  }
  const bool hasExtraWords = dynamic_cast<const CLI::ExtrasError*>(&error) != nullptr;
  std::cerr << "kestra: " << (hasExtraWords ? ExtraWordsText(app) : error.what()) << '\n';
  std::cerr << "Try 'kestra --help'.\n";
  return kExitUsage;
}

}  // namespace

std::optional<int> ParseOptions(const std::vector<std::string>& words, Options& options) {
  CLI::App app("Asks this machine about itself, in a SQL-like language.", "kestra");
  // A query may begin with a comment.
  app.allow_windows_style_options(false);
  app.formatter(std::make_shared<CHelpFormatter>());
  RawOptions raw;
  DeclareOptions(app, raw, options);
  try {
    // Without the program's name, and the last word first: so CLI11 wants them.
    std::vector<std::string> reversed(words.rbegin(), words.rend());
    if (!reversed.empty()) reversed.pop_back();
    app.parse(std::move(reversed));
  } catch (const CLI::ParseError& error) {
    return TellParseError(error, app);
  }
  options.query = ValueIfGiven(app, "QUERY", raw.query);
  options.file = ValueIfGiven(app, "--file", raw.file);
  options.logDirectory = ValueIfGiven(app, "--log", raw.logDirectory);
  options.pluginsDirectory = ValueIfGiven(app, "--plugins", raw.pluginsDirectory);
  options.cacheDirectory = ValueIfGiven(app, "--cache", raw.cacheDirectory);
  options.imageDirectory = ValueIfGiven(app, "--image", raw.imageDirectory);
  options.imageUser = ValueIfGiven(app, "--image-user", raw.imageUser);
  if (app.count("--format") != 0) options.settings.format = FormatFromName(raw.format);
  if (app.count("--sort") != 0) options.settings.rows.sort = ParseSortOrder(raw.sort);
  if (app.count("--limit") != 0) options.settings.rows.limit = raw.limit;
  return std::nullopt;
}

void PrintShortHelp() {
  std::cerr << "Usage: " << kUsage << "\n"
            << "There is no query, and standard input is a terminal. Try 'kestra --help'.\n";
}

}  // namespace kestra::cli
