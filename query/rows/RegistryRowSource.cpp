#include "query/rows/RegistryRowSource.h"

#include <algorithm>
#include <iterator>

#include "VLib/src/text/Text.h"
#include "platform/machine/Machine.h"

namespace kestra {
namespace {

constexpr std::string_view kHives[] = {"HKLM", "HKEY_LOCAL_MACHINE",   "HKCU", "HKEY_CURRENT_USER",
                                       "HKCR", "HKEY_CLASSES_ROOT",    "HKU",  "HKEY_USERS",
                                       "HKCC", "HKEY_CURRENT_CONFIG",  "HKDD", "HKEY_DYN_DATA",
                                       "HKPD", "HKEY_PERFORMANCE_DATA"};

// The first word of a path, with or without "64" for the view of 64-bit programs.
bool IsHive(std::string_view word) {
  if (word.size() < 3) return false;
  if (word.ends_with("64")) word.remove_suffix(2);
  return std::any_of(std::begin(kHives), std::end(kHives),
                     [&](std::string_view hive) { return EqualsNoCase(hive, word); });
}

}  // namespace

bool RegistryRowSource::Run(Value& error) {
  error.SetError();
  return IsHive(std::string_view(m_path).substr(0, m_path.find('\\'))) &&
         !Context().Root->Machine()->Registry();
}

}  // namespace kestra
