#include "cli/shell/commands/SettingCommands.h"

#include <cerrno>
#include <charconv>
#include <limits>
#include <system_error>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

bool IsOff(const DotArguments& arguments) {
  return arguments.words.size() == 1 && FoldCase(arguments.words.front()) == "off";
}

bool Fail(const std::string& sentence) {
  Tell(sentence);
  return false;
}

bool SwitchTo(CShellCore& core, const DotArguments& arguments, const char* name, bool& setting) {
  if (arguments.words.empty()) {
    core.Print(std::string(name) + (setting ? " on\n" : " off\n"));
    return true;
  }
  const std::string wanted = FoldCase(arguments.words.front());
  if (arguments.words.size() != 1 || (wanted != "on" && wanted != "off")) {
    return Fail(std::string(name) + " takes on or off");
  }
  setting = wanted == "on";
  return true;
}

template <class Number>
bool ParseNumber(const DotArguments& arguments, Number most, Number& number) {
  if (arguments.words.size() != 1) return false;
  const std::string& word = arguments.words.front();
  const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
  return error == std::errc() && end == word.data() + word.size() && number >= 0 && number <= most;
}

std::string Stand(const char* name, const std::string& value) {
  return std::string(name) + " " + (value.empty() ? "off" : value) + "\n";
}

bool SetAllowed(CShellCore& core, bool isAllowed) {
  return core.Run([isAllowed](ShellSession& session, const CCancellation&) {
    Check(kestra_session_allow_active(session.handle.get(), isAllowed ? 1 : 0));
  });
}

bool SetPluginsIn(kestra_session* session, const std::string& directory) {
  if (directory.empty()) return kestra_session_clear_plugins(session) == KESTRA_OK;
  return kestra_session_set_plugins_dir(session, directory.c_str()) == KESTRA_OK;
}

// The directory that is named, from the root on; nothing if there is none.
std::optional<std::string> DirectoryOf(const DotArguments& arguments) {
  if (arguments.words.size() != 1 || !IsDirectory(arguments.words.front())) return std::nullopt;
  return FullPath(arguments.words.front());
}

}  // namespace

bool SetFormat(CShellCore& core, const DotArguments& arguments) {
  auto& format = core.CurrentSettings().format;
  if (arguments.words.empty()) {
    const Format byDefault = core.Target().isTerminal ? Format::Table : Format::Text;
    core.Print(Stand(".format", FormatName(format.value_or(byDefault))));
    return true;
  }
  const auto wanted = FormatFromName(FoldCase(arguments.words.front()));
  if (arguments.words.size() != 1 || !wanted) return Fail(".format takes " + FormatNames());
  format = wanted;
  return true;
}

bool SetWide(CShellCore& core, const DotArguments& arguments) {
  return SwitchTo(core, arguments, ".wide", core.CurrentSettings().isWide);
}

bool SetTiming(CShellCore& core, const DotArguments& arguments) {
  return SwitchTo(core, arguments, ".timing", core.CurrentSettings().showStatistics);
}

bool SetSort(CShellCore& core, const DotArguments& arguments) {
  auto& sort = core.CurrentSettings().rows.sort;
  if (arguments.words.empty()) {
    core.Print(Stand(".sort", sort ? sort->column + (sort->isDescending ? " desc" : "") : ""));
    return true;
  }
  if (IsOff(arguments)) {
    sort.reset();
    return true;
  }
  // A column may be an expression, so only the last word can be the direction.
  const std::string last = FoldCase(arguments.words.back());
  const bool hasDirection = arguments.words.size() > 1 && (last == "desc" || last == "asc");
  SortOrder order =
      ParseSortOrder(arguments.words.size() == 1 ? arguments.words[0] : arguments.text);
  if (hasDirection) {
    const DotArguments column =
        ParseArguments(arguments.text.substr(0, arguments.text.size() - last.size()));
    order.column = column.words.size() == 1 ? column.words.front() : column.text;
    order.isDescending = last == "desc";
  }
  sort = order;
  return true;
}

bool SetLimit(CShellCore& core, const DotArguments& arguments) {
  auto& limit = core.CurrentSettings().rows.limit;
  int32_t number = 0;
  if (arguments.words.empty()) {
    core.Print(Stand(".limit", limit ? std::to_string(*limit) : ""));
  } else if (IsOff(arguments)) {
    limit.reset();
  } else if (ParseNumber(arguments, std::numeric_limits<int32_t>::max(), number)) {
    limit = number;
  } else {
    return Fail(".limit takes a number of rows, or off");
  }
  return true;
}

bool SetTimeOut(CShellCore& core, const DotArguments& arguments) {
  uint32_t& timeOut = core.CurrentSettings().timeOut;
  if (arguments.words.empty()) {
    core.Print(Stand(".timeout", timeOut == KESTRA_NO_TIMEOUT ? "" : std::to_string(timeOut)));
    return true;
  }
  uint32_t number = KESTRA_NO_TIMEOUT;
  if (!IsOff(arguments) && !ParseNumber(arguments, KESTRA_NO_TIMEOUT, number)) {
    return Fail(".timeout takes a number of milliseconds, or off");
  }
  timeOut = number;
  return true;
}

bool SetActive(CShellCore& core, const DotArguments& arguments) {
  bool& isAllowed = core.CurrentSettings().allowActive;
  const bool former = isAllowed;
  if (!SwitchTo(core, arguments, ".active", isAllowed)) return false;
  if (isAllowed == former || SetAllowed(core, isAllowed)) return true;
  isAllowed = former;
  return false;
}

bool SetOutput(CShellCore& core, const DotArguments& arguments) {
  if (arguments.words.empty()) {
    core.Print(Stand(".output", core.Target().isTerminal ? "" : core.Target().name));
    return true;
  }
  if (arguments.words.size() != 1) return Fail(".output takes one file, or off");
  const std::string& path = arguments.words.front();
  if (core.SetTarget(IsOff(arguments) ? std::string() : path)) return true;
  return Fail(path + ": " + std::generic_category().message(errno));
}

bool SetCache(CShellCore& core, const DotArguments& arguments) {
  Options& options = core.CurrentOptions();
  if (arguments.words.empty()) {
    core.Print(Stand(".cache", options.cacheDirectory.value_or("")));
    return true;
  }
  const auto directory = DirectoryOf(arguments);
  if (!IsOff(arguments) && !directory)
    return Fail(".cache takes a directory that is there, or off");
  if (options.imageDirectory) return Fail("there is no cache for a Windows volume");
  options.cacheDirectory = IsOff(arguments) ? std::nullopt : directory;
  core.Renew();
  return true;
}

bool SetPlugins(CShellCore& core, const DotArguments& arguments) {
  Options& options = core.CurrentOptions();
  if (arguments.words.empty()) {
    core.Print(Stand(".plugins", options.pluginsDirectory.value_or("")));
    return true;
  }
  const auto directory = DirectoryOf(arguments);
  if (!IsOff(arguments) && !directory) {
    return Fail(".plugins takes a directory that is there, or off");
  }
  if (options.imageDirectory) return Fail("there are no plug-ins for a Windows volume");
  const std::string path = IsOff(arguments) ? std::string() : *directory;
  const auto isDone = std::make_shared<bool>(false);
  core.Run([path, isDone](ShellSession& session, const CCancellation&) {
    *isDone = SetPluginsIn(session.handle.get(), path);
  });
  if (!*isDone) return Fail("the plug-ins of " + path + " cannot be used");
  options.pluginsDirectory = path.empty() ? std::nullopt : std::optional<std::string>(path);
  return true;
}

}  // namespace kestra::cli
