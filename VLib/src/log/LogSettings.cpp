#include "VLib/src/log/LogSettings.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstring>

#include "VLib/src/text/Text.h"
#include "platform/machine/Registry.h"

namespace kestra {
namespace {

// The registry values bear the keys of the file, equals sign included: that is how they have always
// been looked up, and where they are set they are set under these names.
constexpr std::string_view kErrorsOnlyKey = "ERRORS_ONLY=";
constexpr std::string_view kMaxSizeKey = "MAX_SIZE=";
constexpr std::string_view kAppendKey = "APPEND=";
constexpr size_t kMaxLine = 99;

bool StartsWithNoCase(std::string_view text, std::string_view start) {
  return text.size() >= start.size() && EqualsNoCase(text.substr(0, start.size()), start);
}

// The next line, line end included, in pieces of at most kMaxLine bytes.
std::string_view TakeLine(std::string_view& content) {
  const size_t end = content.find('\n');
  size_t length = end == std::string_view::npos ? content.size() : end + 1;
  length = std::min(length, kMaxLine);
  const std::string_view line = content.substr(0, length);
  content.remove_prefix(length);
  return line;
}

std::string CleanLine(std::string_view line) {
  line = TrimRight(line.substr(0, line.find('\0')), "\r\n");
  std::string clean(line);
  std::erase(clean, ' ');
  return clean;
}

// False for a line that is no setting.
bool ReadSettingLine(std::string_view line, LogSettings& settings) {
  if (StartsWithNoCase(line, kErrorsOnlyKey)) {
    settings.errorsOnly = line.substr(kErrorsOnlyKey.size()) == "1";
  } else if (StartsWithNoCase(line, kMaxSizeKey)) {
    size_t consumed = 0;
    settings.maxSize = static_cast<uint32_t>(ParseInt32(line.substr(kMaxSizeKey.size()), consumed));
  } else if (StartsWithNoCase(line, kAppendKey)) {
    settings.append = line.substr(kAppendKey.size()) == "1";
  } else {
    return false;
  }
  return true;
}

std::unique_ptr<CRegistryKey> OpenKey(CRegistry& registry, RegistryRoot root,
                                      const std::string& path) {
  std::unique_ptr<CRegistryKey> rootKey;
  std::unique_ptr<CRegistryKey> key;
  if (registry.OpenRoot(root, rootKey) != kErrorSuccess) return nullptr;
  if (rootKey->OpenSubKey(path, kKeyQueryValue, key) != kErrorSuccess) return nullptr;
  return key;
}

// Reads into the four bytes of number, as a query with a buffer of four bytes does: the type is not
// looked at, a shorter value fills what it has, and a longer one does not fit.
void ReadFourBytes(CRegistryKey* pKey, const std::string& name, uint32_t& number) {
  uint32_t type = 0;
  std::string data;
  if (!pKey || pKey->QueryValue(name, type, data) != kErrorSuccess) return;
  if (data.size() <= sizeof number) std::memcpy(&number, data.data(), data.size());
}

}  // namespace

std::string LogSettingsBlock(const LogSettings& settings) {
  return fmt::format("{}{:d}\n{}{:<32}\n{}{:d}\n{:-<49}", kErrorsOnlyKey, settings.errorsOnly,
                     kMaxSizeKey, settings.maxSize, kAppendKey, settings.append, "");
}

void ReadLogSettings(const std::string& content, LogSettings& settings) {
  std::string_view rest = content;
  while (!rest.empty()) {
    const std::string line = CleanLine(TakeLine(rest));
    if (!line.empty() && !ReadSettingLine(line, settings)) return;
  }
}

void ReadLogSettings(CRegistry* pRegistry, const std::string& keyPath, const std::string& logName,
                     LogSettings& settings) {
  if (!pRegistry || keyPath.empty()) return;
  const auto machineKey = OpenKey(*pRegistry, RegistryRoot::LocalMachine, keyPath);
  const auto userKey = OpenKey(*pRegistry, RegistryRoot::CurrentUser, keyPath);
  const auto read = [&](std::string_view key, uint32_t number) {
    const std::string general(key);
    for (const std::string& name : {general, general + logName}) {
      ReadFourBytes(machineKey.get(), name, number);
      ReadFourBytes(userKey.get(), name, number);
    }
    return number;
  };
  settings.errorsOnly = read(kErrorsOnlyKey, settings.errorsOnly) == 1;
  settings.maxSize = read(kMaxSizeKey, settings.maxSize);
  settings.append = read(kAppendKey, settings.append) == 1;
}

}  // namespace kestra
