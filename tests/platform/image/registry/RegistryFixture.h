// Registry files in memory, as a volume gives them, and short ways of asking.
#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "platform/image/registry/VolumeRegistry.h"

namespace kestra::test {

inline const std::string kConfig = "C:\\Windows\\System32\\config\\";  // where the hives lie
inline const std::string kWide = KESTRA_MADE_VOLUMES "/wide";          // of a 64-bit system
constexpr uint32_t k32 = kKeyWow64Key32;
constexpr uint32_t k64 = kKeyWow64Key64;

// What SubKeys() gives for a key.
struct Question {
  const char* path;
  uint32_t access;
  const char* answer;
};

// Names are found without regard to case. The registries made use it as long as they live.
class CRegistryFiles {
 public:
  CRegistryFiles() = default;
  // All files below a directory of this machine, which stands for "C:".
  explicit CRegistryFiles(const std::string& directory);

  std::string& operator[](const std::string& name);
  void Remove(const std::string& name);
  void Fail(const std::string& name, SystemError error);  // opening it gives the error
  // The file says that it has so many bytes more than it gives.
  void CutShort(const std::string& name, uint64_t missing);

  image::OpenRegistryFile Opener();
  image::VolumeRegistryOptions Options(const std::string& userName = {});
  std::unique_ptr<image::CVolumeRegistry> Hives(const std::string& userName = {});
  std::unique_ptr<image::CVolumeRegistry> Texts(const std::string& userName = {});

  std::vector<std::string> Notices() const;
  // Files that were opened and then read, in that order, each once.
  std::vector<std::string> Opened() const;

 private:
  struct File {
    std::string bytes;
    SystemError error = kErrorSuccess;
    uint64_t missing = 0;
  };
  SystemError Open(const std::string& name, std::unique_ptr<CFileReader>& reader);
  void NoteRead(const std::string& name);

  std::map<std::string, File> m_files;  // by name in lower case
  mutable std::mutex m_lock;            // guards the next two
  std::vector<std::string> m_notices;
  std::vector<std::string> m_read;

  friend class CMemoryReader;
};

// The root of "HKLM\..." and the key behind it.
SystemError OpenKey(CRegistry& registry, const std::string& path, uint32_t access,
                    std::unique_ptr<CRegistryKey>& key);
// "name|name", or "error N".
std::string SubKeys(CRegistry& registry, const std::string& path, uint32_t access = 0);
std::string ValueNames(CRegistry& registry, const std::string& path, uint32_t access = 0);
// The data, NULs shown as "\0" and bytes that are not printable ASCII of types other than text as
// "\xHH", behind the type; the value's name stands behind the last "|". Or "error N".
std::string Value(CRegistry& registry, const std::string& pathAndName, uint32_t access = 0);

}  // namespace kestra::test
