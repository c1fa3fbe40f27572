// The scan of a directory for plug-ins.
#include <algorithm>

#include "VLib/src/text/Text.h"
#include "model/plugins/Plugin.h"
#include "platform/machine/FileSystem.h"
#include "platform/machine/SystemFacts.h"
#include "platform/os/CodeFile.h"
#include "platform/os/HostEnvironment.h"

namespace kestra {
namespace {

constexpr std::string_view kMark = "diagnostic plugin";

bool HasEnding(std::string_view name) {
  const std::string_view ending = os::LibraryEnding();
  return name.size() > ending.size() &&
         EqualsNoCase(name.substr(name.size() - ending.size()), ending);
}

// Whether the library says of itself that it is one of ours. Told by its file, so that unrelated
// libraries in the directory are never loaded.
bool SaysItIsPlugin(const std::string& path) {
  std::string comments;
  if (os::ReadLibraryComments(path, comments) != kErrorSuccess) return false;
  return Matches(comments, "*" + std::string(kMark) + "*", true, false);
}

// Names separated by commas, empty when the library does not load or does not tell.
std::string ReadModuleNames(const std::string& path) {
  std::lock_guard lock(PluginLock());
  const os::NativeLibrary library = os::OpenLibrary(path, os::LibraryUse::ForNow);
  if (!library) return {};
  const auto pGetModuleNames =
      reinterpret_cast<os::ByteString (*)()>(os::FindExport(library, "GetModuleNames"));
  std::optional<std::string> names;
  try {
    if (pGetModuleNames) names = os::CByteString::Take(pGetModuleNames()).Text();
  } catch (...) {
    // It names none. The exception is gone before the library is: its type may lie there.
  }
  os::CloseLibrary(library);
  return names.value_or(std::string());
}

// When the file itself was written, also where the entry is a link to it. False for what is no
// plain file.
bool ReadWriteTime(CFileSystem& files, const std::string& path, FileTime& writeTime) {
  std::unique_ptr<CFileReader> reader;
  FileInfo info;
  if (files.OpenFile(path, LastLink::Follow, reader) != kErrorSuccess ||
      reader->Info(info) != kErrorSuccess) {
    return false;
  }
  writeTime = info.lastWriteTime;
  return true;
}

// The names of the libraries in a directory, in one order on every system, since of two plug-ins of
// one age the first one stays. False if the directory cannot be read.
bool ListLibraries(CFileSystem& files, const std::string& directory,
                   std::vector<std::string>& names) {
  std::unique_ptr<CDirectoryListing> listing;
  if (files.OpenDirectory(directory, listing) != kErrorSuccess) return false;
  std::string name;
  SystemError error = kErrorSuccess;
  while ((error = listing->Next(name)) == kErrorSuccess) {
    if (HasEnding(name)) names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return error == kErrorNoMoreFiles;
}

}  // namespace

void DiagPluginMap::AddModule(std::string_view name, const Ref<DiagPlugin>& plugin) {
  if (name.empty()) return;
  for (Entry& entry : m_entries) {
    if (!EqualsNoCase(entry.name, name)) continue;
    if (entry.plugin->WriteTime < plugin->WriteTime) entry.plugin = plugin;
    return;
  }
  m_entries.push_back({std::string(name), plugin});
}

std::string DescribeCodeFile(const std::string& path) {
  std::string version;
  if (os::ReadLibraryVersion(path, version) != kErrorSuccess) return {};
  return path.substr(path.find_last_of(os::PathSeparator()) + 1) + " " + version;
}

bool DiagPluginMap::Scan(const std::string& directory, CMachine& machine) {
  if (directory.empty()) return true;
  m_entries.clear();
  CFileSystem* pFiles = machine.Files();
  std::vector<std::string> libraries;
  if (!pFiles || !ListLibraries(*pFiles, directory, libraries)) return false;
  const char separator = machine.System().PathSeparator();
  const std::string_view folder = TrimRight(directory, std::string_view(&separator, 1));
  for (const std::string& library : libraries) {
    const std::string path = std::string(folder) + separator + library;
    FileTime writeTime;
    if (!ReadWriteTime(*pFiles, path, writeTime) || !SaysItIsPlugin(path)) continue;
    const std::string names = ReadModuleNames(path);
    if (names.empty()) continue;
    const auto plugin = MakeRef<DiagPlugin>(path, writeTime);
    for (const std::string& name : Split(names, ',')) AddModule(TrimBlanks(name), plugin);
  }
  return true;
}

}  // namespace kestra
