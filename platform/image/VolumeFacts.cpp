#include "platform/image/VolumeFacts.h"

#include <charconv>
#include <mutex>
#include <utility>

#include "platform/base/ByteSource.h"
#include "platform/base/text/Characters.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

constexpr char kCurrentVersion[] = "SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";
constexpr char kControl[] = "SYSTEM\\CurrentControlSet\\Control\\";
constexpr char kMachineEnvironment[] = "Session Manager\\Environment";
constexpr char kUserEnvironment[] = "Environment";

// The suites of a server that tell editions apart. Source: the Win32 page of OSVERSIONINFOEX.
struct Suite {
  std::string_view name;
  uint32_t bit;
};
constexpr Suite kSuites[] = {
    {"Small Business", 0x1},   {"Enterprise", 0x2},
    {"Terminal Server", 0x10}, {"Small Business(Restricted)", 0x20},
    {"EmbeddedNT", 0x40},      {"DataCenter", 0x80},
    {"Personal", 0x200},       {"Blade", 0x400},
};

std::optional<std::string> ReadValue(CRegistry& registry, RegistryRoot root,
                                     const std::string& path, const std::string& name,
                                     uint32_t& type) {
  std::unique_ptr<CRegistryKey> top, key;
  std::string data;
  const bool isRead = registry.OpenRoot(root, top) == kErrorSuccess &&
                      top->OpenSubKey(path, kKeyQueryValue, key) == kErrorSuccess &&
                      key->QueryValue(name, type, data) == kErrorSuccess;
  return isRead ? std::optional(std::move(data)) : std::nullopt;
}

std::optional<std::string> ReadText(CRegistry& registry, RegistryRoot root, const std::string& path,
                                    const std::string& name) {
  uint32_t type = kRegNone;
  std::optional<std::string> text = ReadValue(registry, root, path, name, type);
  if (!text || (type != kRegSz && type != kRegExpandSz)) return std::nullopt;
  text->resize(std::min(text->find('\0'), text->size()));
  return text;
}

std::optional<uint32_t> ReadNumber(CRegistry& registry, const std::string& path,
                                   const std::string& name) {
  uint32_t type = kRegNone, number = 0;
  const auto data = ReadValue(registry, RegistryRoot::LocalMachine, path, name, type);
  if (!data || type != kRegDword || !LoadLittle(*data, 0, number)) return std::nullopt;
  return number;
}

uint32_t NumberAt(std::string_view text) {
  uint32_t number = 0;
  std::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

class CVolumeFacts final : public CSystemFacts {
 public:
  CVolumeFacts(CVolumeRegistry& registry, std::string windowsFolder)
      : m_registry(registry), m_windowsFolder(std::move(windowsFolder)) {}

  SystemFamily Family() const override { return SystemFamily::Windows; }
  std::optional<WindowsVersion> Windows() const override {
    const std::lock_guard lock(m_lock);
    if (m_version) return m_version;
    const WindowsVersion version = ReadVersion();
    // What a cancel cut short is read again by the next one who asks.
    if (!os::IsWorkTerminated()) m_version = version;
    return version;
  }
  SystemWidth Width() const override {
    return {.isKnown = true, .isRedirected = false, .isWide = m_registry.IsWide()};
  }
  std::string ComputerName() const override {
    return OfMachine(std::string(kControl) + "ComputerName\\ComputerName", "ComputerName")
        .value_or(std::string());
  }
  std::optional<std::string> FolderPath(Folder folder) const override {
    switch (folder) {
      case Folder::Windows:
        return m_windowsFolder;
      case Folder::System:
        return m_windowsFolder + "\\system32";
      case Folder::Temp:
        return TemporaryFolder();
      default:
        return std::nullopt;
    }
  }
  char PathSeparator() const override { return '\\'; }
  size_t MaxPath() const override { return 260; }

 private:
  std::optional<std::string> OfMachine(const std::string& path, const std::string& name) const {
    return ReadText(m_registry, RegistryRoot::LocalMachine, path, name);
  }

  WindowsVersion ReadVersion() const {
    constexpr uint32_t kPlatformNt = 2;
    WindowsVersion version;
    version.platformId = kPlatformNt;
    // "6.1"; from Windows 10 on that text stays at 6.3 and two numbers stand beside it.
    const std::string text = OfMachine(kCurrentVersion, "CurrentVersion").value_or("");
    const size_t point = std::min(text.find('.'), text.size());
    version.major = NumberAt(text);
    version.minor = point < text.size() ? NumberAt(std::string_view(text).substr(point + 1)) : 0;
    if (const auto major = ReadNumber(m_registry, kCurrentVersion, "CurrentMajorVersionNumber")) {
      version.major = *major;
      version.minor =
          ReadNumber(m_registry, kCurrentVersion, "CurrentMinorVersionNumber").value_or(0);
    }
    version.text = OfMachine(kCurrentVersion, "CSDVersion").value_or("");
    version.productType = ProductType();
    version.suiteMask = SuiteMask();
    version.architecture = Architecture();
    // A name such as "Windows Server 2003 R2" is all that the registry has of it.
    version.isServerR2 = version.major == 5 && HasR2Name();
    return version;
  }
  bool HasR2Name() const {
    const auto name = OfMachine(kCurrentVersion, "ProductName");
    return name && name->ends_with(" R2");
  }
  std::optional<uint32_t> ProductType() const {
    const auto type = OfMachine(std::string(kControl) + "ProductOptions", "ProductType");
    if (!type) return std::nullopt;
    if (EqualsNoCase(*type, "WinNT")) return 1;
    return EqualsNoCase(*type, "LanmanNT") ? 2 : 3;
  }
  uint32_t SuiteMask() const {
    uint32_t type = kRegNone, mask = 0;
    const auto names = ReadValue(m_registry, RegistryRoot::LocalMachine,
                                 std::string(kControl) + "ProductOptions", "ProductSuite", type);
    if (!names || type != kRegMultiSz) return 0;
    for (std::string_view rest = *names; !rest.empty();) {
      const size_t end = std::min(rest.find('\0'), rest.size());
      for (const Suite& suite : kSuites) {
        if (EqualsNoCase(suite.name, rest.substr(0, end))) mask |= suite.bit;
      }
      rest.remove_prefix(std::min(end + 1, rest.size()));
    }
    return mask;
  }
  std::optional<uint32_t> Architecture() const {
    constexpr uint32_t kIntel = 0, kArm = 5, kIa64 = 6, kAmd64 = 9, kArm64 = 12;
    const auto name =
        OfMachine(std::string(kControl) + kMachineEnvironment, "PROCESSOR_ARCHITECTURE");
    if (!name) return m_registry.IsWide() ? std::optional(kAmd64) : std::nullopt;
    constexpr std::pair<std::string_view, uint32_t> kNames[] = {
        {"x86", kIntel}, {"AMD64", kAmd64}, {"ARM64", kArm64}, {"IA64", kIa64}, {"ARM", kArm}};
    for (const auto& [known, number] : kNames) {
      if (EqualsNoCase(*name, known)) return number;
    }
    return std::nullopt;
  }

  // The user's, if it is known whose; else the machine's.
  std::string TemporaryFolder() const {
    VolumeUser user;
    std::optional<std::string> folder;
    if (m_registry.CurrentUser(user) == kErrorSuccess)
      folder = ReadText(m_registry, RegistryRoot::CurrentUser, kUserEnvironment, "TEMP");
    if (!folder) folder = OfMachine(std::string(kControl) + kMachineEnvironment, "TEMP");
    if (!folder) return m_windowsFolder + "\\Temp";
    return Expand(*folder, user.profilePath);
  }
  std::string Expand(const std::string& text, const std::string& profile) const {
    const std::pair<std::string_view, std::string> variables[] = {
        {"%USERPROFILE%", profile},
        {"%SystemRoot%", m_windowsFolder},
        {"%windir%", m_windowsFolder},
        {"%SystemDrive%", m_windowsFolder.substr(0, 2)},
    };
    for (const auto& [name, value] : variables) {
      if (EqualsNoCase(std::string_view(text).substr(0, name.size()), name))
        return value + text.substr(name.size());
    }
    return text;
  }

  CVolumeRegistry& m_registry;
  const std::string m_windowsFolder;
  mutable std::mutex m_lock;                        // guards the next one
  mutable std::optional<WindowsVersion> m_version;  // nothing until it was read whole
};

}  // namespace

std::unique_ptr<CSystemFacts> MakeVolumeFacts(CVolumeRegistry& registry,
                                              std::string windowsFolder) {
  return std::make_unique<CVolumeFacts>(registry, std::move(windowsFolder));
}

}  // namespace kestra::image
