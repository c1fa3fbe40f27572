#include "VLib/src/text/VersionNumber.h"

#include <algorithm>
#include <limits>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

bool ParsePiece(std::string_view piece, int32_t& number, std::string& suffix) {
  size_t consumed = 0;
  number = ParseInt32(piece, consumed);
  if (consumed == 0 || number < 0 || number == std::numeric_limits<int32_t>::max()) return false;
  suffix = piece.substr(consumed);
  return std::all_of(suffix.begin(), suffix.end(), IsAsciiLetter);
}

}  // namespace

VersionNumber ParseVersion(std::string_view text) {
  const char separator = text.find('.') == std::string_view::npos ? ',' : '.';
  VersionNumber result;
  for (bool isLast = false; !isLast;) {
    if (result.Count == result.Parts.size()) return {};
    const size_t end = text.find(separator);
    isLast = end == std::string_view::npos;
    if (!ParsePiece(text.substr(0, end), result.Parts[result.Count], result.Suffixes[result.Count]))
      return {};
    ++result.Count;
    if (!isLast) text.remove_prefix(end + 1);
  }
  return result;
}

int CompareVersions(const VersionNumber& a, const VersionNumber& b) {
  const uint32_t count = std::max(a.Count, b.Count);
  for (uint32_t i = 0; i < count; ++i) {
    // Neither is negative, so the difference fits.
    if (a.Parts[i] != b.Parts[i]) return a.Parts[i] - b.Parts[i];
    const int order = CompareNoCase(a.Suffixes[i], b.Suffixes[i]);
    if (order != 0) return order;
  }
  return 0;
}

}  // namespace kestra
