// The compression layer of data files: a header of 12 bytes (a magic number, the length of the
// text, another magic number, all of 32 bits in little-endian order) and the zlib stream of the
// text (RFC 1950).
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "VLib/src/data/TerminationLook.h"

namespace kestra {

// The layer; nothing if it would not be shorter than the text, or the look says to end.
std::optional<std::string> CompressCfgText(std::string_view text, CTerminationLook& termination);

bool HasCompressionHeader(std::string_view bytes);
// The text; nothing if the bytes are no such layer, if it does not have the very length that the
// header states, or if the look says to end. What the header states costs no memory: the text grows
// with what the stream gives, to kLargestCompressedText at most.
std::optional<std::string> DecompressCfgText(std::string_view bytes, CTerminationLook& termination);

// Data files are some kilobytes long. A text beyond this is not compressed, so that a small file
// that would come out as gigabytes can be taken for what it is.
inline constexpr size_t kLargestCompressedText = size_t{256} << 20;

}  // namespace kestra
