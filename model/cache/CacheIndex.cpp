// The directory of the cache: its index, and how entries come into it and go.
#include <fmt/format.h>

#include "VLib/src/paths/AbsolutePath.h"
#include "VLib/src/text/Text.h"
#include "model/cache/ResultCache.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/SystemFacts.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

constexpr uint32_t kLockWaitMs = 600'000;

// A name that can be a file's, wherever the directory lies.
bool IsPlainName(std::string_view name) {
  constexpr size_t kLongest = 200;
  if (name.empty() || name.size() > kLongest) return false;
  for (const char c : name) {
    if (!IsAsciiAlnum(c) && c != '_' && c != '-') return false;
  }
  return true;
}

// The text that a key is compared and checked by.
std::string TextOf(const CfgNode& key) {
  std::string text;
  key.Dump(text, 0, 0, CfgLayout::Cfg);
  return text;
}

bool IsEntryOf(const CfgNode& section, std::string_view moduleName, const CfgNode* pArgs) {
  if (section.GetText("Module") != moduleName) return false;
  if (!pArgs) return true;
  const CfgNode* pOwn = section.Section("Args");
  return pOwn && IsSameSection(*pOwn, *pArgs);
}

}  // namespace

bool ResultCache::Open(const std::string& directory) {
  m_separator = m_poMachine->System().PathSeparator();
  if (!m_poMachine->Files() || !IsAbsolutePath(directory, m_separator)) return false;
  uint32_t flags = 0;
  if (Files().VolumeFlags(directory.substr(0, 3), flags) != kErrorSuccess) return false;
  m_hasAcls = (flags & kFilePersistentAcls) != 0;
  m_directory = TrimRight(directory, std::string_view(&m_separator, 1));
  OwnCode();  // early, while the file that we were loaded from still lies there
  return true;
}

std::unique_ptr<os::CNamedLock> ResultCache::Lock(const std::string& path, QueryMessage& message) {
  std::string name = path;
  for (char& c : name) {
    if (c == '\\') c = '_';  // not allowed in the name of a kernel object
  }
  std::unique_ptr<os::CNamedLock> lock;
  os::AcquireNamedLock(name, message.TerminationEvent(), kLockWaitMs, lock);
  return lock;
}

std::string ResultCache::PathOf(std::string_view name) const {
  return fmt::format("{}{}{}", m_directory, m_separator, name);
}

bool ResultCache::MakeSureOfDirectory() {
  FileInfo info;
  const size_t root = m_separator == '/' ? 1 : 3;
  if (m_directory.size() <= root) return true;
  if (Files().Info(m_directory, info) == kErrorSuccess) return true;
  const SystemError error = Files().MakeDirectory(m_directory, NewRights::OwnerOnly);
  if (error == kErrorAlreadyExists) return true;
  if (error != kErrorSuccess) return false;
  if (m_hasAcls) Files().GrantEveryone(m_directory);
  return true;
}

bool ResultCache::LoadIndex(CfgNode& index, QueryMessage& message) {
  std::string text;
  return ReadFile(IndexPath(), std::nullopt, text, message) &&
         index.LoadText(text, 0, CfgLayout::Cfg, message.TerminationEvent());
}

bool ResultCache::SaveIndex(const CfgNode& index) {
  std::string text;
  index.Dump(text, 0, 0, CfgLayout::Cfg);
  return WriteFile(IndexPath(), text);
}

// Whether a name stands for nothing: an index that was lost may have left files behind that belong
// to other keys.
bool ResultCache::TakeName(const CfgNode& index, const std::string& name) {
  if (index.Section(name)) return false;
  const SystemError error = Files().RemoveFile(PathOf(name + ".cfg"));
  return error == kErrorSuccess || error == kErrorFileNotFound;
}

bool ResultCache::AddToIndex(CfgNode& index, const CfgNode& key, std::string& name) {
  constexpr int kMostTries = 1000;
  auto number = static_cast<uint32_t>(index.GetNumber("LastFileNumber"));
  for (int i = 0; i < kMostTries; ++i, ++number) {
    name = fmt::format("{}_{}", key.GetText("Module"), number);
    if (!TakeName(index, name)) continue;
    CfgNode& section = index.AddSection(name);
    section.Values = key.Values;
    section.Children = key.Children;
    index.SetNumber("LastFileNumber", static_cast<int32_t>(number + 1));
    return SaveIndex(index);
  }
  return false;
}

bool ResultCache::FindEntry(DiagModule& module, const std::string& code, bool anyUser,
                            QueryMessage& message, Entry& entry) {
  if (!module.HasArgs() || !IsPlainName(module.GetName()) || !MakeSureOfDirectory()) return false;
  const auto user = anyUser ? std::string("*") : os::CurrentUserName();
  if (code.empty() || !user) return false;
  const Ref<CfgNode> key = MakeCacheKey(module.GetName(), *module.Args);
  key->SetText("Binary", code);
  key->SetText("User", *user);
  // A key with a line end in an argument, say, would never be found again.
  if (!key->ReadsBack(0, CfgLayout::Cfg)) return false;
  entry.key = TextOf(*key);

  const auto lock = Lock(IndexPath(), message);
  if (!lock) return false;
  CfgNode index;
  if (LoadIndex(index, message)) {
    for (const auto& section : index.Children) {
      if (!IsPlainName(section->Name) || !IsSameSection(*section, *key)) continue;
      entry.path = PathOf(section->Name + ".cfg");
      return true;
    }
  } else if (message.IsTerminated()) {
    return false;
  }
  std::string name;
  if (!AddToIndex(index, *key, name)) return false;
  entry.path = PathOf(name + ".cfg");
  return true;
}

// A section name that no entry of ours can have is forgotten, and no file is touched for it.
bool ResultCache::RemoveEntryFile(const std::string& sectionName, QueryMessage& message) {
  if (!IsPlainName(sectionName)) return true;
  const std::string path = PathOf(sectionName + ".cfg");
  const auto lock = Lock(path, message);
  if (!lock) return message.IsTerminated() ? false : message.Fail(kErrorTimeout);
  const SystemError error = Files().RemoveFile(path);
  return error == kErrorSuccess || error == kErrorFileNotFound || message.Fail(error);
}

bool ResultCache::ClearEntries(std::string_view moduleName, const DiagParams* pArgs,
                               QueryMessage& message) {
  const bool all = moduleName == "*";
  Ref<CfgNode> key;
  if (pArgs) key = MakeCacheKey(std::string(moduleName), *pArgs);
  const auto lock = Lock(IndexPath(), message);
  if (!lock) return message.IsTerminated() ? false : message.Fail(kErrorTimeout);
  CfgNode index;
  if (!LoadIndex(index, message)) return !message.IsTerminated();
  size_t removed = 0;
  bool isDone = true;
  for (size_t i = 0; isDone && i < index.Children.size();) {
    const CfgNode& section = *index.Children[i];
    if (!all && !IsEntryOf(section, moduleName, key ? key->Section("Args") : nullptr)) {
      ++i;
      continue;
    }
    isDone = RemoveEntryFile(section.Name, message);
    if (!isDone) break;
    index.Children.erase(index.Children.begin() + static_cast<std::ptrdiff_t>(i));
    ++removed;
  }
  if (removed == 0) return isDone;
  if (!index.Children.empty()) {
    SaveIndex(index);
  } else {
    Files().RemoveFile(IndexPath());
  }
  return isDone;
}

}  // namespace kestra
