// How queries are run and shown. The options of the command line set them, and the shell's dot
// commands change them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/render/Render.h"

namespace kestra::cli {

struct Settings {
  std::optional<Format> format;          // nothing: by where standard output goes
  uint32_t timeOut = KESTRA_NO_TIMEOUT;  // milliseconds; 0 parses only
  bool allowActive = false;
  bool showStatistics = false;  // after each result, on standard error
};

}  // namespace kestra::cli
