#include "cli/shell/commands/QueryCommands.h"

#include <algorithm>
#include <stdexcept>

#include "cli/QueryRunner.h"
#include "cli/QueryText.h"
#include "cli/Terminal.h"
#include "cli/messages/ErrorText.h"
#include "cli/shell/Script.h"
#include "cli/shell/ShellOutput.h"
#include "cli/shell/commands/ClassTree.h"

namespace kestra::cli {
namespace {

constexpr int kDeepestScript = 8;  // a file that reads itself ends there

struct DumpFormat {
  const char* name;
  int32_t number;  // of kestra_item_xml_dump
};

constexpr DumpFormat kDumpFormats[] = {
    {"xml", 0}, {"raw", 1}, {"lines", 2}, {"rawlines", 3}, {"sections", 4}};

const DumpFormat* FindDumpFormat(const std::string& name) {
  const std::string folded = FoldCase(name);
  for (const DumpFormat& format : kDumpFormats) {
    if (folded == format.name) return &format;
  }
  return nullptr;
}

void DumpItem(kestra_item* item, int32_t format, COutput& output) {
  const char* text = nullptr;
  size_t length = 0;
  Check(kestra_item_xml_dump(item, format, &text, &length));
  output.Write({text, length});
}

// How many items there were.
int32_t DumpItems(kestra_value* value, int32_t format, COutput& output) {
  if (const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, value)) {
    DumpItem(item.get(), format, output);
    return 1;
  }
  const auto values = Take<CValuesHandle>(kestra_value_as_vector, value);
  const int32_t count = values ? Ask<int32_t>(kestra_values_count, values.get()) : 0;
  int32_t items = 0;
  for (int32_t i = 0; i < count; ++i) {
    const auto element = Take<CValueHandle>(kestra_values_value, values.get(), i);
    const auto item = Take<CItemHandle>(kestra_value_as_vdiag_item, element.get());
    if (!item) continue;
    DumpItem(item.get(), format, output);
    ++items;
  }
  return items;
}

// Null, after it was told, for an Error.
CValueHandle ItemOfModule(ShellSession& session, const std::string& module,
                          const Settings& settings, const CCancellation& cancellation) {
  const std::string name = module.substr(0, module.find_first_of("(#"));
  FindModule(session.handle.get(), name);  // throws a better sentence than the query would have
  const std::string query = "SELECT * FROM " + module + "." + name;
  auto value =
      Take<CValueHandle>(kestra_session_run_query_sync_n, session.handle.get(), query.data(),
                         query.size(), cancellation.Event(), settings.timeOut);
  if (cancellation.IsGivenUp() || !value || !Is(kestra_value_is_error, value.get())) return value;
  TellError(session.handle.get(), QueryPiece(query), value.get(), settings);
  return nullptr;
}

// What is to be dumped, and how; false for a format that there is not.
bool ParseDump(const DotArguments& arguments, std::string& what, const DumpFormat*& pFormat) {
  pFormat = &kDumpFormats[0];
  what = arguments.text;
  if (arguments.words.empty()) return true;
  // The arguments of a module may hold blanks, so the format is what stands last.
  const std::string& last = arguments.words.back();
  if (const DumpFormat* pNamed = FindDumpFormat(last)) {
    pFormat = pNamed;
    what = what.substr(0, what.size() - last.size());
    what.erase(what.find_last_not_of(" \t") + 1);
  }
  const bool isWhole = what.find_first_of(" \t") == std::string::npos || what.ends_with(')');
  return isWhole;
}

}  // namespace

bool Explain(CShellCore& core, const DotArguments& arguments) {
  if (arguments.text.empty()) {
    Tell(".explain takes a query");
    return false;
  }
  const auto status = std::make_shared<int>(kExitError);
  core.Run([query = arguments.text, settings = core.CurrentSettings(), target = core.Target(),
            status](ShellSession& session, const CCancellation& cancellation) {
    CShellOutput output(target, cancellation);
    *status = CQueryRunner(session.handle.get(), settings, output).Explain(QueryPiece(query));
  });
  return *status == kExitResult;
}

bool Dump(CShellCore& core, const DotArguments& arguments) {
  std::string what;
  const DumpFormat* pFormat = nullptr;
  if (!ParseDump(arguments, what, pFormat)) {
    Tell(".dump takes a module and one of xml, raw, lines, rawlines and sections");
    return false;
  }
  const auto isDone = std::make_shared<bool>(false);
  core.Run([what, format = pFormat->number, settings = core.CurrentSettings(),
            target = core.Target(),
            isDone](ShellSession& session, const CCancellation& cancellation) {
    const bool isLast = what.empty() || FoldCase(what) == "last";
    CValueHandle own;
    if (!isLast) own = ItemOfModule(session, what, settings, cancellation);
    if (!isLast && !own) return;
    kestra_value* const value = isLast ? session.lastResult.get() : own.get();
    CShellOutput output(target, cancellation);
    if (!value || DumpItems(value, format, output) == 0) {
      throw std::runtime_error(isLast ? "there is no last result that holds items"
                                      : "there is nothing to show");
    }
    output.Flush();
    *isDone = true;
  });
  return *isDone;
}

bool Read(CShellCore& core, const DotArguments& arguments) {
  if (arguments.words.size() != 1) {
    Tell(".read takes one file");
    return false;
  }
  if (arguments.words.front() == "-") {
    Tell("standard input is what the shell itself reads: .read takes a file");
    return false;
  }
  if (core.ScriptDepth() >= kDeepestScript) {
    Tell("files that read each other are read " + std::to_string(kDeepestScript) + " deep");
    return false;
  }
  std::string text;
  try {
    text = ReadQueryFile(arguments.words.front());
  } catch (const std::runtime_error& error) {
    Tell(error.what());
    return false;
  }
  ++core.ScriptDepth();
  const bool isDone = RunScript(core, text);
  --core.ScriptDepth();
  return isDone;
}

}  // namespace kestra::cli
