// DiagPlugin: a library that adds modules. include/kestra/plugin.h is the contract with those who
// write one.
//
// The scan of a directory loads each library only for its names and lets go of it; a library is
// loaded for good when a query first asks for one of its modules.
#pragma once

#include <atomic>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "model/classes/Class.h"
#include "platform/base/FileTime.h"
#include "platform/machine/Machine.h"
#include "platform/os/Event.h"
#include "platform/os/Library.h"

namespace kestra {

// Any thread. GetModuleNames, GetModuleTypeInfo and GetPossibilities are called under the
// process-wide plug-in lock, the others with no lock but those of the items that they are about;
// two threads may be in one of them at once.
class DiagPlugin : public CCounted<DiagPlugin> {
 public:
  DiagPlugin(std::string path, FileTime writeTime) : Path(std::move(path)), WriteTime(writeTime) {}

  const std::string Path;  // full path of the library
  const FileTime WriteTime;

  // Loads the library if that has not been tried yet. A failure is not tried again.
  bool Load();
  // The class of one of its modules; null if the library does not load, or describes none or a
  // faulty one. The name is that of the scan.
  Ref<DiagClass> GetClass(std::string_view moduleName);
  uint32_t Possibilities() const { return m_possibilities; }
  // The file name and version of the code that is loaded for this plug-in, which may be older than
  // the file that lies there now. Empty when that cannot be told.
  std::string Code();

  // --- Calls into the library; it loads first. ---

  bool CanClear() { return Load() && m_pClearModule; }
  // A module's content; nothing when the library gives none, and when pTermination (may be null)
  // was signalled first: the call is then left behind.
  std::optional<std::string> GetModule(std::string_view moduleName, std::string_view args,
                                       bool keep, const os::CWaitable* pTermination);
  // The answer to an operation; as above. A library without that export gives nothing. keptEvent
  // (may be null) lives as long as the call.
  std::optional<std::string> Update(std::string_view request, const Ref<os::CKeptEvent>& keptEvent,
                                    const os::CWaitable* pTermination);
  // Lets the library forget a module that it kept.
  void ClearModule(const std::string& moduleId);

 private:
  enum class LoadState : uint32_t { NotTried, Loaded, Failed };
  void LoadNow();
  Ref<DiagClass> FindKnownClass(std::string_view moduleName);
  Ref<DiagClass> ReadClass(std::string_view moduleName);

  // Guarded by the plug-in lock until the state says Loaded; constant afterwards.
  std::atomic<LoadState> m_loadState{LoadState::NotTried};
  uint32_t m_possibilities = 0;
  os::ByteString (*m_pGetModuleTypeInfo)(os::ByteString) = nullptr;
  os::ByteString (*m_pGetModule)(os::ByteString, os::ByteString, int, int, int) = nullptr;
  void (*m_pClearModule)(os::ByteString, int) = nullptr;
  os::ByteString (*m_pUpdate)(os::ByteString, int) = nullptr;
  std::string m_code;
  std::mutex m_classesLock;  // guards m_classes; held for a look only
  std::vector<Ref<DiagClass>> m_classes;
};

// Held through scanning, loading and reading classes, and so across calls into the libraries. It
// nests: a plug-in's own start-up code may come back to us.
std::recursive_mutex& PluginLock();

// The file name of a library and a text that no other build of it has; empty if it cannot be read.
std::string DescribeCodeFile(const std::string& path);

// Module names and who makes them, in the order of the scan. One thread at a time.
class DiagPluginMap {
 public:
  struct Entry {
    std::string name;
    Ref<DiagPlugin> plugin;
  };

  // Reads the names of all plug-ins in a directory of the machine that we run on, in place of those
  // that the map holds. An empty directory name changes nothing. False if there is no such
  // directory, or it cannot be read; the map is then empty. A library that is no plug-in, does not
  // load or names no modules is passed over.
  bool Scan(const std::string& directory, CMachine& machine);
  // By name in any case; null if there is none. Lives until the next scan.
  const Entry* Find(std::string_view name) const;
  const std::vector<Entry>& Entries() const { return m_entries; }

 private:
  void AddModule(std::string_view name, const Ref<DiagPlugin>& plugin);

  std::vector<Entry> m_entries;
};

}  // namespace kestra
