// Where the log's settings come from: the head of the last run's file, then the registry.
#pragma once

#include <string>

#include "VLib/src/log/Log.h"

namespace kestra {

struct LogSettings {
  bool errorsOnly = true;
  uint32_t maxSize = 100;
  bool append = false;
};

// The block that stands at the head of each log: always of one length, so that it can be rewritten
// in place.
std::string LogSettingsBlock(const LogSettings& settings);
// Reads the settings lines at the head of content, up to the first line that is none.
void ReadLogSettings(const std::string& content, LogSettings& settings);
// Reads the values of the key that the host named for this process, under the machine's and the
// user's root; nothing happens without a registry or a key.
void ReadLogSettings(CRegistry* pRegistry, const std::string& keyPath, const std::string& logName,
                     LogSettings& settings);

}  // namespace kestra
