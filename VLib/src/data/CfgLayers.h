// The layers around the text of a data file: a scramble with a key, and inside it a compression.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// The mark of UTF-16 text, which no data file is.
inline bool HasUtf16Mark(std::string_view bytes) {
  return bytes.starts_with("\xFF\xFE");
}

// Takes the layers off; without a key there are none. False if it was terminated.
bool DecodeCfgLayers(std::string& bytes, uint32_t key, CTerminationLook& termination);

// The bytes of a file that reads back. By chance they may begin with the mark that a reader
// refuses, or the text as a compressed one does: then empty lines, which mean nothing, come first.
// False if it was terminated.
bool EncodeCfgLayers(const std::string& text, uint32_t key, bool compress,
                     CTerminationLook& termination, std::string& bytes);

}  // namespace kestra
