#include "platform/win32/os/named/ObjectName.h"

#include "platform/base/text/NameCode.h"
#include "platform/win32/base/Wide.h"

namespace kestra::os {
namespace {

// The system takes MAX_PATH characters, the prefix of a name space among them.
constexpr size_t kLongestName = 200;
constexpr size_t kReadableBytesOfLongName = 20;

bool CanStandAsItIs(std::string_view name, const std::wstring& wide) {
  return !name.empty() && name.front() != '%' && wide.size() <= kLongestName &&
         name.find_first_of(std::string_view("\\\0", 2)) == std::string_view::npos &&
         Narrow(wide) == name;
}

}  // namespace

std::wstring ObjectName(std::string_view name) {
  const std::wstring wide = Wide(name);
  if (CanStandAsItIs(name, wide)) return wide;
  const std::string escaped = EscapeName(name);
  if (escaped.size() < kLongestName) return Wide("%" + escaped);
  // "+" is never what an escaped name begins with.
  const std::string readable = EscapeName(name.substr(0, kReadableBytesOfLongName));
  return Wide("%+" + std::to_string(name.size()) + "+" + HashName(name) + "+" + readable);
}

}  // namespace kestra::os
