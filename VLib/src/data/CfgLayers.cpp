#include "VLib/src/data/CfgLayers.h"

#include <optional>

#include "VLib/src/data/Compression.h"
#include "VLib/src/data/Scramble.h"

namespace kestra {
namespace {

// Puts the layers around the text.
bool Encode(std::string& text, uint32_t key, bool compress, CTerminationLook& termination) {
  if (key == 0) return true;
  std::optional<std::string> layer;
  if (compress) layer = CompressCfgText(text, termination);
  if (layer) text = std::move(*layer);
  return !termination.IsOverNow() && Scramble(text, key, termination);
}

}  // namespace

bool DecodeCfgLayers(std::string& bytes, uint32_t key, CTerminationLook& termination) {
  if (key == 0) return true;
  if (!Unscramble(bytes, key, termination)) return false;
  std::optional<std::string> text = DecompressCfgText(bytes, termination);
  if (text) bytes = std::move(*text);
  return !termination.IsOverNow();
}

bool EncodeCfgLayers(const std::string& text, uint32_t key, bool compress,
                     CTerminationLook& termination, std::string& bytes) {
  constexpr int kMostLines = 16;  // each is enough but for one in 65,536
  std::string lines;
  for (int i = 0; i < kMostLines; ++i, lines += "\r\n") {
    bytes = lines + text;
    const bool looksCompressed = key != 0 && HasCompressionHeader(bytes);
    if (looksCompressed) continue;
    if (!Encode(bytes, key, compress, termination)) return false;
    if (!HasUtf16Mark(bytes)) return true;
  }
  return false;
}

}  // namespace kestra
