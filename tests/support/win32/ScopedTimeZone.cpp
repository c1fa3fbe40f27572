#include "tests/support/ScopedTimeZone.h"

#include <cstring>
#include <cwchar>
#include <stdexcept>

#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/os/TimeZone.h"

namespace kestra::test {
namespace {

// Windows has names of its own. Source: windowsZones.xml of the Unicode CLDR.
constexpr struct {
  const char* name;
  const wchar_t* key;
} kZones[] = {
    {"America/New_York", L"Eastern Standard Time"},
    {"Asia/Kathmandu", L"Nepal Standard Time"},
    {"Australia/Lord_Howe", L"Lord Howe Standard Time"},
    {"Europe/Berlin", L"W. Europe Standard Time"},
    {"Pacific/Apia", L"Samoa Standard Time"},
    {"UTC", L"UTC"},
};

// The value "TZI" of a zone's key, of the Win32 page TIME_ZONE_INFORMATION.
struct ZoneValue {
  LONG bias;
  LONG standardBias;
  LONG daylightBias;
  SYSTEMTIME standardDate;
  SYSTEMTIME daylightDate;
};

DYNAMIC_TIME_ZONE_INFORMATION ReadZone(const wchar_t* key) {
  const std::wstring path =
      std::wstring(L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion\\Time Zones\\") + key;
  HKEY handle = nullptr;
  if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &handle) != ERROR_SUCCESS)
    throw std::runtime_error("there is no time zone " + Narrow(key));
  const CUniqueKey owner(handle);
  ZoneValue value{};
  DWORD size = sizeof value;
  if (RegQueryValueExW(handle, L"TZI", nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size) !=
      ERROR_SUCCESS)
    throw std::runtime_error("the time zone has no rules: " + Narrow(key));
  DYNAMIC_TIME_ZONE_INFORMATION zone{};
  zone.Bias = value.bias;
  zone.StandardBias = value.standardBias;
  zone.DaylightBias = value.daylightBias;
  zone.StandardDate = value.standardDate;
  zone.DaylightDate = value.daylightDate;
  std::wcsncpy(zone.TimeZoneKeyName, key, std::size(zone.TimeZoneKeyName) - 1);
  return zone;
}

// "XYZ-2" is two hours east of Greenwich, as POSIX writes zones.
DYNAMIC_TIME_ZONE_INFORMATION FixedZone(const std::string& name) {
  DYNAMIC_TIME_ZONE_INFORMATION zone{};
  zone.Bias = std::stoi(name.substr(3)) * 60;
  return zone;
}

}  // namespace

CScopedTimeZone::CScopedTimeZone(const std::string& zone) {
  for (const auto& known : kZones) {
    if (zone != known.name) continue;
    const DYNAMIC_TIME_ZONE_INFORMATION found = ReadZone(known.key);
    os::UseTimeZone(&found);
    return;
  }
  const DYNAMIC_TIME_ZONE_INFORMATION fixed = FixedZone(zone);
  os::UseTimeZone(&fixed);
}

CScopedTimeZone::~CScopedTimeZone() {
  os::UseTimeZone(nullptr);
}

}  // namespace kestra::test
