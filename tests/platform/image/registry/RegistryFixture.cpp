#include "tests/platform/image/registry/RegistryFixture.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

#include "tests/support/TempDirectory.h"

namespace kestra::test {

// Gives at most a few bytes at a time, as any reader may.
class CMemoryReader final : public CFileReader {
 public:
  CMemoryReader(CRegistryFiles& files, std::string name, const std::string& bytes, uint64_t missing)
      : m_files(files), m_name(std::move(name)), m_bytes(bytes), m_missing(missing) {}
  SystemError Info(FileInfo& info) override {
    info = {};
    info.size = m_bytes.size() + m_missing;
    return kErrorSuccess;
  }
  SystemError Read(size_t limit, std::string& bytes) override {
    if (m_position == 0) m_files.NoteRead(m_name);
    const size_t count = std::min({limit, m_bytes.size() - m_position, size_t{10007}});
    bytes.append(m_bytes, m_position, count);
    m_position += count;
    return kErrorSuccess;
  }
  SystemError Seek(uint64_t offset) override {
    m_position = static_cast<size_t>(offset);
    return kErrorSuccess;
  }

 private:
  CRegistryFiles& m_files;
  const std::string m_name;
  const std::string& m_bytes;
  const uint64_t m_missing;
  size_t m_position = 0;
};

namespace {

std::string Lower(std::string text) {
  for (char& each : text) each = static_cast<char>(std::tolower(static_cast<unsigned char>(each)));
  return text;
}

const std::map<std::string, RegistryRoot> kRoots = {
    {"HKLM", RegistryRoot::LocalMachine},  {"HKU", RegistryRoot::Users},
    {"HKCU", RegistryRoot::CurrentUser},   {"HKCR", RegistryRoot::ClassesRoot},
    {"HKCC", RegistryRoot::CurrentConfig}, {"HKPD", RegistryRoot::PerformanceData},
};

template <class Enumerate>
std::string Names(CRegistry& registry, const std::string& path, uint32_t access,
                  Enumerate enumerate) {
  std::unique_ptr<CRegistryKey> key;
  SystemError error = OpenKey(registry, path, access, key);
  std::string names;
  for (uint32_t i = 0; error == kErrorSuccess; ++i) {
    std::string name;
    error = (key.get()->*enumerate)(i, name);
    if (error == kErrorSuccess) names += (i == 0 ? "" : "|") + name;
  }
  return error == kErrorNoMoreItems ? names : fmt::format("error {}", error);
}

}  // namespace

CRegistryFiles::CRegistryFiles(const std::string& directory) {
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (!entry.is_regular_file()) continue;
    std::string name = entry.path().lexically_relative(directory).string();
    std::replace(name.begin(), name.end(), '/', '\\');
    (*this)["C:\\" + name] = ReadWholeFile(entry.path().string());
  }
}

std::string& CRegistryFiles::operator[](const std::string& name) {
  return m_files[Lower(name)].bytes;
}

void CRegistryFiles::Remove(const std::string& name) {
  m_files.erase(Lower(name));
}

void CRegistryFiles::Fail(const std::string& name, SystemError error) {
  m_files[Lower(name)].error = error;
}

void CRegistryFiles::CutShort(const std::string& name, uint64_t missing) {
  m_files[Lower(name)].missing = missing;
}

SystemError CRegistryFiles::Open(const std::string& name, std::unique_ptr<CFileReader>& reader) {
  const auto found = m_files.find(Lower(name));
  if (found == m_files.end()) return kErrorPathNotFound;
  if (found->second.error != kErrorSuccess) return found->second.error;
  reader = std::make_unique<CMemoryReader>(*this, name, found->second.bytes, found->second.missing);
  return kErrorSuccess;
}

void CRegistryFiles::NoteRead(const std::string& name) {
  std::lock_guard guard(m_lock);
  m_read.push_back(name.substr(name.rfind('\\') + 1));
}

image::OpenRegistryFile CRegistryFiles::Opener() {
  return [this](const std::string& name, std::unique_ptr<CFileReader>& reader) {
    return Open(name, reader);
  };
}

image::VolumeRegistryOptions CRegistryFiles::Options(const std::string& userName) {
  return {userName, [this](const std::string& sentence) {
            std::lock_guard guard(m_lock);
            m_notices.push_back(sentence);
          }};
}

std::unique_ptr<image::CVolumeRegistry> CRegistryFiles::Hives(const std::string& userName) {
  return image::MakeHiveRegistry(Opener(), "C:\\Windows", Options(userName));
}

std::unique_ptr<image::CVolumeRegistry> CRegistryFiles::Texts(const std::string& userName) {
  return image::MakeTextRegistry(Opener(), Options(userName));
}

std::vector<std::string> CRegistryFiles::Notices() const {
  std::lock_guard guard(m_lock);
  return m_notices;
}

std::vector<std::string> CRegistryFiles::Opened() const {
  std::lock_guard guard(m_lock);
  return m_read;
}

SystemError OpenKey(CRegistry& registry, const std::string& path, uint32_t access,
                    std::unique_ptr<CRegistryKey>& key) {
  const size_t end = std::min(path.find('\\'), path.size());
  std::unique_ptr<CRegistryKey> root;
  if (const SystemError error = registry.OpenRoot(kRoots.at(path.substr(0, end)), root)) {
    return error;
  }
  return root->OpenSubKey(path.substr(std::min(end + 1, path.size())), access, key);
}

std::string SubKeys(CRegistry& registry, const std::string& path, uint32_t access) {
  return Names(registry, path, access, &CRegistryKey::EnumSubKey);
}

std::string ValueNames(CRegistry& registry, const std::string& path, uint32_t access) {
  return Names(registry, path, access, &CRegistryKey::EnumValue);
}

std::string Value(CRegistry& registry, const std::string& pathAndName, uint32_t access) {
  const size_t bar = pathAndName.rfind('|');
  std::unique_ptr<CRegistryKey> key;
  SystemError error = OpenKey(registry, pathAndName.substr(0, bar), access, key);
  uint32_t type = 0;
  std::string data;
  if (error == kErrorSuccess) error = key->QueryValue(pathAndName.substr(bar + 1), type, data);
  if (error != kErrorSuccess) return fmt::format("error {}", error);
  const bool isText = type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
  std::string shown = fmt::format("{:x}:", type);
  for (const char each : data) {
    const auto byte = static_cast<unsigned char>(each);
    if (isText && byte == 0) {
      shown += "\\0";
    } else if (isText || (byte >= 0x20 && byte < 0x7F)) {
      shown += each;
    } else {
      shown += fmt::format("\\x{:02x}", byte);
    }
  }
  return shown;
}

}  // namespace kestra::test
