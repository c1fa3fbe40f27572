// The compression layer of data files: a header of 12 bytes (a magic number, the length of the
// text, another magic number, all of 32 bits in little-endian order) and the zlib stream of the
// text (RFC 1950).
#pragma once

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>

#include "VLib/src/threads/TerminationLook.h"

namespace kestra {

// The layer; nothing if it would not be shorter than the text or not be believed by a reader
// (LargestTextOf), or if the look says to end.
std::optional<std::string> CompressCfgText(std::string_view text, CTerminationLook& termination);

bool HasCompressionHeader(std::string_view bytes);
// The text; nothing if the bytes are no such layer, if it does not have the very length that the
// header states, if that is beyond LargestTextOf, or if the look says to end. What the header
// states costs no memory: the text grows with what the stream gives.
std::optional<std::string> DecompressCfgText(std::string_view bytes, CTerminationLook& termination);

// The most bytes of text that a layer of so many bytes may hold: 64 times as many, but 1 MiB in any
// case and never beyond 256 MiB. zlib reaches a thousandfold (its "Technical Details"), and a tree
// takes many times its text, so that without a limit a small file would cost gigabytes.
constexpr size_t LargestTextOf(size_t layer) {
  constexpr size_t kMost = size_t{256} << 20;
  constexpr size_t kAlways = size_t{1} << 20;
  constexpr size_t kRatio = 64;
  return std::max(kAlways, std::min(layer, kMost / kRatio) * kRatio);
}

}  // namespace kestra
