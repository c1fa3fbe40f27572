// Small forms that come with what is read: wildcards, versions, numbers, paths of a volume, and the
// list of files to rename. The input is two texts, parted by its first byte.
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "VLib/src/paths/WininitFile.h"
#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "fuzz/support/Require.h"
#include "platform/image/files/VolumePath.h"

namespace {

using namespace kestra;
using kestra::fuzz::Require;

void Compare(std::string_view first, std::string_view second) {
  for (const bool ignoreCase : {false, true}) {
    Require(Matches(first, "*", ignoreCase, false) && Matches(first, first, ignoreCase, false));
    Matches(first, second, ignoreCase, true);
  }
  const VersionNumber a = ParseVersion(first), b = ParseVersion(second);
  Require(CompareVersions(a, b) == -CompareVersions(b, a) && CompareVersions(a, a) == 0);
  Require((CompareNoCase(first, second) == 0) == (CompareNoCase(second, first) == 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  constexpr size_t kLongest = 2000;  // time grows with the product of both
  if (size < 2 || size > kLongest) return 0;
  const std::string_view bytes(reinterpret_cast<const char*>(data) + 1, size - 1);
  const std::string_view first = bytes.substr(0, data[0]);
  const std::string_view second = bytes.substr(first.size());
  Compare(first, second);
  size_t consumed = 0;
  ParseInt32(first, consumed);
  ParseUInt32(second, consumed);
  std::vector<std::string> names;
  image::SplitVolumePath(first, names);
  std::string content(second);
  AddRenameLine(content, first);
  Require(content.size() >= second.size());
  return 0;
}
