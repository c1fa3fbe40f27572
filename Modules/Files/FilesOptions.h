// What a filling of the module Files was asked for, beside the path.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

#include "Modules/FillDeadline.h"
#include "platform/base/Ref.h"

namespace kestra {

class DiagModule;
class QueryMessage;

// Shared by the items of one filling, and not changed any more then, but for the last member.
struct FilesOptions : CCounted<FilesOptions> {
  static constexpr uint32_t kMostTimeOutMs = 3600000;
  static constexpr uint32_t kMostLevels = 100;
  static constexpr uint32_t kMostContent = 1048576;  // characters of FileText, and lines
  static constexpr uint32_t kLongestLine = 1024;     // characters
  static constexpr uint32_t kWholeLine = 0xFFFFFFFF;

  std::string namePattern = "*";
  std::string pathPattern = "*";  // the last part of FilePath
  uint32_t timeOutMs = 0;
  uint32_t levels = 0;
  uint32_t charFrom = 0;
  uint32_t charCount = 0;
  uint32_t lineFrom = 0;
  uint32_t lineCount = 0;
  uint32_t lineSize = 0;
  std::string linePattern = "*";
  bool isLfLineEnd = false;  // on Linux a line feed ends a line as well as CR LF
  // A directory of the filling has its directories filled by several threads now; those below it
  // then do not.
  mutable std::atomic<bool> isFilledTogether{false};

  bool WantsText() const { return charFrom != 0 && charCount <= kMostContent; }
  bool WantsLines() const;
  bool MatchesName(const std::string& name) const;
};

// Reads all but pathPattern and isLfLineEnd. False when one is outside its limit; the message's
// notes tell which.
bool ReadFilesOptions(DiagModule& module, FilesOptions& options, QueryMessage& message);

}  // namespace kestra
