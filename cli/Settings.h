// How queries are run and shown. The options of the command line set them, and the shell's dot
// commands change them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "cli/Place.h"
#include "cli/render/Render.h"

namespace kestra::cli {

struct Settings {
  std::optional<Format> format;          // nothing: by where standard output goes
  uint32_t timeOut = KESTRA_NO_TIMEOUT;  // milliseconds; 0 parses only
  bool allowActive = false;
  bool isWide = false;  // tables are not cut to the width of the terminal
  RowSelection rows;
  // Whether a result that lacks the column to sort by is shown as it comes; else it is not shown.
  bool showsUnsorted = false;
  bool showStatistics = false;  // after each result, on standard error
  Place place = Place::CommandLine;
};

}  // namespace kestra::cli
