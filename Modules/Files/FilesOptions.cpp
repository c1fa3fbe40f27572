#include "Modules/Files/FilesOptions.h"

#include "Modules/ArgumentLimit.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

bool MatchesPattern(const std::string& name, const std::string& pattern) {
  return pattern == "*" || Matches(name, pattern, true, false);
}

}  // namespace

bool FilesOptions::WantsLines() const {
  return lineFrom != 0 && lineCount != 0 && lineCount <= kMostContent &&
         (lineSize <= kLongestLine || lineSize == kWholeLine);
}

bool FilesOptions::MatchesName(const std::string& name) const {
  return MatchesPattern(name, namePattern) && MatchesPattern(name, pathPattern);
}

bool ReadFilesOptions(DiagModule& module, FilesOptions& options, QueryMessage& message) {
  const bool isRead = module.GetArg("FileName", options.namePattern) &&
                      module.GetArg("Timeout", options.timeOutMs) &&
                      module.GetArg("Levels", options.levels) &&
                      module.GetArg("CharFrom", options.charFrom) &&
                      module.GetArg("CharCount", options.charCount) &&
                      module.GetArg("LineFrom", options.lineFrom) &&
                      module.GetArg("LineCount", options.lineCount) &&
                      module.GetArg("LineSize", options.lineSize) &&
                      module.GetArg("LinePattern", options.linePattern);
  return isRead &&
         FitsLimit(module, "Levels", options.levels, FilesOptions::kMostLevels, message) &&
         FitsLimit(module, "Timeout", options.timeOutMs, FilesOptions::kMostTimeOutMs, message);
}

}  // namespace kestra
