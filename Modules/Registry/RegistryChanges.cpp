#include "Modules/Registry/RegistryChanges.h"

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

#include "Modules/GivenText.h"
#include "Modules/Registry/RegistryValueText.h"
#include "VLib/src/system/OsKind.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr size_t kLongestName = 255;        // characters, of a key with its path, and of a value
constexpr std::ptrdiff_t kMostLevels = 32;  // that one call makes
constexpr uint32_t kNt6Workstation = 11;

bool RequireRegistry(CMachine& machine, QueryMessage& message) {
  return machine.Registry() || message.Fail(kErrorCallNotImplemented);
}

bool Raise(QueryMessage& message, uint32_t id, const std::string& insert) {
  message.RaiseMessage(id, {insert});
  return false;
}

// True if none of the properties is given.
bool RefuseProperties(const DiagParams& params, std::initializer_list<const char*> names,
                      QueryMessage& message) {
  for (const char* pName : names) {
    if (params.Find(pName, true)) return Raise(message, 11007, pName);
  }
  return true;
}

bool IsKeyName(const std::string& name) {
  const std::vector<std::string> parts = Split(name, '\\');
  return name.find('\0') == std::string::npos &&
         std::none_of(parts.begin(), parts.end(),
                      [](const std::string& part) { return part.empty(); });
}

bool CheckKeyName(CMachine& machine, const std::string& parent, const std::string& name,
                  QueryMessage& message) {
  const size_t length = CountCharacters(name);
  // The parent, a separator and the name.
  const bool isLong = length > kLongestName || CountCharacters(parent) + 1 + length > kLongestName;
  const bool isDeep = GetOsKind(machine) == kNt6Workstation &&
                      std::count(name.begin(), name.end(), '\\') >= kMostLevels;
  if (isLong || isDeep) return message.Fail(kErrorFilenameExceedsRange);
  return IsKeyName(name) || message.Fail(kErrorInvalidName);
}

// Opens a key for writing values.
bool OpenForValues(CMachine& machine, const RegistryHive& hive, const std::string& path,
                   std::unique_ptr<CRegistryKey>& key, QueryMessage& message) {
  const SystemError error =
      OpenRegistryKey(machine, hive, path, kKeyQueryValue | kKeySetValue, key);
  return error == kErrorSuccess || message.Fail(error);
}

// A key that is being removed, and the keys found below it that are still there.
struct Doomed {
  std::string path;
  std::vector<std::string> children;
};

// The names of the keys below one. A link has none: what it leads to belongs to another tree, and
// only the link goes. kErrorCancelled when the query was cancelled.
SystemError ListChildren(CMachine& machine, const RegistryHive& hive, Doomed& doomed,
                         QueryMessage& message) {
  std::unique_ptr<CRegistryKey> root, key;
  SystemError error = machine.Registry()->OpenRoot(hive.root, root);
  if (error == kErrorSuccess)
    error = root->OpenLinkItself(doomed.path, kKeyEnumerateSubKeys | hive.view, key);
  std::string name;
  for (uint32_t i = 0; error == kErrorSuccess; ++i) {
    if (message.IsTerminatedInLoop()) return kErrorCancelled;
    error = key->EnumSubKey(i, name);
    if (error == kErrorSuccess) doomed.children.push_back(name);
  }
  return error == kErrorNoMoreItems ? kErrorSuccess : error;
}

SystemError DeleteEmptyKey(CMachine& machine, const RegistryHive& hive, const std::string& path) {
  std::unique_ptr<CRegistryKey> root;
  const SystemError error = machine.Registry()->OpenRoot(hive.root, root);
  return error == kErrorSuccess ? root->DeleteSubKey(path, hive.view) : error;
}

}  // namespace

bool AddRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& parentPath,
                    const DiagParams& params, QueryMessage& message) {
  if (!RequireRegistry(machine, message)) return false;
  const std::string* pName = GivenText(params, "Name");
  if (!pName || pName->empty()) return Raise(message, 11000, "Name");
  if (!RefuseProperties(params, {"Path", "Class", "LastWriteTime"}, message) ||
      !CheckKeyName(machine, HivePath(hive, parentPath), *pName, message))
    return false;
  std::unique_ptr<CRegistryKey> parent, key;
  SystemError error =
      OpenRegistryKey(machine, hive, parentPath, kKeyQueryValue | kKeyCreateSubKey, parent);
  if (error != kErrorSuccess) return message.Fail(error);
  error = parent->OpenSubKey(*pName, kKeyQueryValue | hive.view, key);
  if (error == kErrorSuccess) return Raise(message, 16002, *pName);
  if (error != kErrorFileNotFound && error != kErrorPathNotFound) return message.Fail(error);
  error = parent->CreateSubKey(*pName, kKeyQueryValue | hive.view, key);
  return error == kErrorSuccess || message.Fail(error);
}

bool AddRegistryValue(CMachine& machine, const RegistryOptions& options, const std::string& keyPath,
                      const DiagParams& params, QueryMessage& message) {
  if (!RequireRegistry(machine, message)) return false;
  const std::string* pName = GivenText(params, "Name");
  if (!pName) return Raise(message, 11000, "Name");
  const DiagParam* pType = params.Find("Type", true);
  if (!pType) return Raise(message, 11000, "Type");
  std::unique_ptr<CRegistryKey> key;
  if (!RefuseProperties(params, {"Path"}, message) ||
      !OpenForValues(machine, options.hive, keyPath, key, message))
    return false;
  if (CountCharacters(*pName) > kLongestName) return message.Fail(kErrorFilenameExceedsRange);
  if (pName->find('\0') != std::string::npos) return message.Fail(kErrorInvalidName);
  uint32_t knownType = 0;
  std::string knownData;
  const SystemError error = key->QueryValue(*pName, knownType, knownData);
  if (error == kErrorSuccess) return Raise(message, 16002, *pName);
  if (error != kErrorFileNotFound) return message.Fail(error);
  return WriteValue(*key, *pName, pType->DWordValue, options.multiSzSeparator, params, message);
}

bool UpdateRegistryValue(CMachine& machine, const RegistryOptions& options,
                         const std::string& keyPath, const std::string& name, uint32_t type,
                         const DiagParams& params, QueryMessage& message) {
  std::unique_ptr<CRegistryKey> key;
  if (!RequireRegistry(machine, message) ||
      !OpenForValues(machine, options.hive, keyPath, key, message))
    return false;
  uint32_t knownType = 0;
  std::string knownData;
  const SystemError error = key->QueryValue(name, knownType, knownData);
  if (error != kErrorSuccess) return message.Fail(error);
  return WriteValue(*key, name, type, options.multiSzSeparator, params, message);
}

bool DeleteRegistryValue(CMachine& machine, const RegistryHive& hive, const std::string& keyPath,
                         const std::string& name, QueryMessage& message) {
  std::unique_ptr<CRegistryKey> key;
  if (!RequireRegistry(machine, message) || !OpenForValues(machine, hive, keyPath, key, message))
    return false;
  const SystemError error = key->DeleteValue(name);
  return error == kErrorSuccess || message.Fail(error);
}

// From a list, since a tree may be deeper than the stack. What is added below a key meanwhile is
// not looked for again: that key then refuses to go.
bool DeleteRegistryKey(CMachine& machine, const RegistryHive& hive, const std::string& path,
                       QueryMessage& message) {
  if (!RequireRegistry(machine, message)) return false;
  if (path.empty()) return message.Fail(kErrorAccessDenied);
  std::vector<Doomed> open(1, Doomed{path, {}});
  SystemError error = ListChildren(machine, hive, open.back(), message);
  while (!open.empty()) {
    if (message.IsTerminatedInLoop()) return message.Fail(kErrorCancelled);
    Doomed& last = open.back();
    if (IsGoneFromRegistry(error)) {
      open.pop_back();
      error = kErrorSuccess;
    } else if (error != kErrorSuccess) {
      return message.Fail(error);
    } else if (!last.children.empty()) {
      Doomed child{last.path + "\\" + last.children.back(), {}};
      last.children.pop_back();
      error = ListChildren(machine, hive, child, message);
      open.push_back(std::move(child));
    } else {
      error = DeleteEmptyKey(machine, hive, last.path);
      if (error == kErrorSuccess) open.pop_back();
    }
  }
  return true;
}

}  // namespace kestra
