// Version texts: up to four numbers with optional letters behind each, such as "1.2b.3".
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>

namespace kestra {

struct VersionNumber {
  uint32_t Count = 0;  // components, 0 to 4; 0 means that the text is not a version
  std::array<int32_t, 4> Parts{};
  std::array<std::string, 4> Suffixes;
};

// Splits at "."; a text of one piece is split at "," instead. Each piece is a decimal number from 0
// to 2147483646 with ASCII letters behind it.
VersionNumber ParseVersion(std::string_view text);
inline bool IsVersion(std::string_view text) {
  return ParseVersion(text).Count > 0;
}

// Negative, 0 or positive. Absent components count as 0 with no letters, so 1.2 equals 1.2.0.
int CompareVersions(const VersionNumber& a, const VersionNumber& b);

}  // namespace kestra
