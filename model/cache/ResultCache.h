// ResultCache: filled modules, kept in files between runs of a host, so that a slow module need not
// look at the machine each time.
//
// The directory holds an index, CACHE.CFG, and one file per entry. An entry belongs to one module
// with one set of arguments, to the build of the code that made it, and to one user unless the
// query shares it ("#60*"). It is as good as the time to live in the query says, and is written
// anew when it is older. Entries of other builds stay until DROP MODULE.
//
// The cache is there to save time: whatever goes wrong with it, the module is filled from the
// machine. An entry that was cut off, changed, or written by somebody whom the caller need not
// trust is not believed; one that would not read back as it was is not written.
//
// Threads and processes: any number may use one directory. A named lock stands before the index and
// before each entry; a lock ends with its process.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "VLib/src/data/CfgNode.h"
#include "model/classes/Module.h"
#include "platform/base/FileTime.h"
#include "platform/os/NamedLock.h"

namespace kestra {

class ResultCache : public CCounted<ResultCache> {
 public:
  // The files are those of the machine; one without files has no cache.
  explicit ResultCache(Ref<CMachine> machine) : m_poMachine(std::move(machine)) {}

  // False for a path that is not absolute, and on a volume that cannot be asked. The directory need
  // not exist; its first entry makes it, for the user alone.
  bool Open(const std::string& directory);

  // Where an entry lies, and what it was made for.
  struct Entry {
    std::string path;
    std::string key;                // the key's text; part of the entry's checksum
    FileTime written{};             // when its content was, once it was read
    CFillNotes::Counts problems{};  // of what could not be read then, likewise
  };
  // The entry of a module with its arguments, which is added to the index if it is not there.
  // code describes what makes the module: a library and its version. False means: no cache now.
  bool FindEntry(DiagModule& module, const std::string& code, bool anyUser, QueryMessage& message,
                 Entry& entry);
  // Reads a fresh entry into the module; false if there is none that can be believed, or the
  // message is terminated. The caller holds the entry's lock.
  bool ReadEntry(Entry& entry, int32_t timeToLive, DiagModule& module, QueryMessage& message);
  // Writes what the module holds. The caller holds the entry's lock. Nothing tells of a failure but
  // the answer: the entry is then as it was.
  bool WriteEntry(const Entry& entry, DiagModule& module, QueryMessage& message);

  // Forgets the entries of a module, in exactly that spelling, or all for "*"; with pArgs only the
  // one with these arguments. False when an entry cannot be removed; the message then says why.
  bool ClearEntries(std::string_view moduleName, const DiagParams* pArgs, QueryMessage& message);

  // The lock that stands before a file of the directory; null when it could not be had within ten
  // minutes, or the message was terminated first.
  static std::unique_ptr<os::CNamedLock> Lock(const std::string& path, QueryMessage& message);

 private:
  CFileSystem& Files() const { return *m_poMachine->Files(); }
  std::string PathOf(std::string_view name) const;
  std::string IndexPath() const { return PathOf("CACHE.CFG"); }
  bool MakeSureOfDirectory();
  bool LoadIndex(CfgNode& index, QueryMessage& message);
  bool SaveIndex(const CfgNode& index);
  bool TakeName(const CfgNode& index, const std::string& name);
  bool AddToIndex(CfgNode& index, const CfgNode& key, std::string& name);
  bool RemoveEntryFile(const std::string& sectionName, QueryMessage& message);
  // pWritten may be null.
  bool ReadFile(const std::string& path, std::optional<int32_t> timeToLive, std::string& bytes,
                QueryMessage& message, FileTime* pWritten = nullptr);
  bool WriteFile(const std::string& path, std::string_view bytes);

  const Ref<CMachine> m_poMachine;
  std::string m_directory;  // without trailing separators
  char m_separator = '\\';
  bool m_hasAcls = false;
};

// The key of an entry. Without a user and code it stands for the entries of all of them.
Ref<CfgNode> MakeCacheKey(const std::string& moduleName, const DiagParams& args);
// Whether two sections have the same values and sub-sections, in any order.
bool IsSameSection(const CfgNode& a, const CfgNode& b);
// This library's file name and version, as they were when it was asked for first.
const std::string& OwnCode();

}  // namespace kestra
