// The text files that hold the registry of a Wine prefix: "system.reg", "user.reg", "userdef.reg".
// A decoder: it takes bytes and does no I/O. The form is the one that Wine's registry server
// writes:
//
//   WINE REGISTRY Version 2
//   ;; All keys relative to REGISTRY\\Machine
//
//   #arch=win64
//
//   [Software\\Some Key] 1795406846
//   #time=1dd7b00263d0182
//   #class="class name"
//   #link
//   @="the default value"
//   "Text"=str(2):"%ProgramFiles%\\with \x20ac and \"quotes\""
//   "Number"=dword:00000001
//   "Bytes"=hex(3):01,02,03
//
// A line of bytes that ends in a backslash goes on in the next one.
#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "platform/image/registry/tree/KeyTree.h"

namespace kestra::image {

struct WineRegistry {
  std::shared_ptr<CKeyTree> tree;
  std::string relativeTo;   // "REGISTRY\User\S-1-5-21-0-0-0-1000"; empty if it is not told
  bool isWide = false;      // the prefix is one of 64 bits
  size_t damagedLines = 0;  // lines that made no sense and were passed over
};

// kErrorRegistryCorrupt for what is no such text at all; kErrorCancelled when the thread's work is
// terminated. A line that makes no sense is passed over;
// one of a key takes the values below it along. Keys that stand for the same place are one, and of
// two values of a name the last one counts. Memory and time are in proportion to the text.
SystemError DecodeWineRegistry(std::string_view text, WineRegistry& registry);

}  // namespace kestra::image
