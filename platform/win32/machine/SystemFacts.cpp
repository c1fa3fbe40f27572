#include "platform/machine/SystemFacts.h"

#include <array>

#include "platform/win32/base/Optional.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"

namespace kestra {
namespace {

constexpr const wchar_t* kKernel = L"kernel32.dll";

// What GetVersionEx says depends on the manifest of the host; this function says what the system
// is. The other one stays for a system that lacks it.
bool ReadVersionInfo(OSVERSIONINFOEXW& info) {
  info = {};
  info.dwOSVersionInfoSize = sizeof info;
  auto* const pInfo = reinterpret_cast<OSVERSIONINFOW*>(&info);
  const auto pRtlGetVersion = Optional<LONG WINAPI(OSVERSIONINFOW*)>(L"ntdll.dll", "RtlGetVersion");
  if (pRtlGetVersion && pRtlGetVersion(pInfo) == 0) return true;
  return GetVersionExW(pInfo);
}

SYSTEM_INFO ReadSystemInfo() {
  const auto pGetNativeSystemInfo =
      Optional<void WINAPI(SYSTEM_INFO*)>(kKernel, "GetNativeSystemInfo");
  SYSTEM_INFO info{};
  if (pGetNativeSystemInfo)
    pGetNativeSystemInfo(&info);
  else
    GetSystemInfo(&info);
  return info;
}

std::optional<uint32_t> ReadProduct(const OSVERSIONINFOEXW& info) {
  const auto pGetProductInfo =
      Optional<BOOL WINAPI(DWORD, DWORD, DWORD, DWORD, DWORD*)>(kKernel, "GetProductInfo");
  DWORD product = 0;
  const bool isRead =
      pGetProductInfo && pGetProductInfo(info.dwMajorVersion, info.dwMinorVersion,
                                         info.wServicePackMajor, info.wServicePackMinor, &product);
  return isRead ? std::optional<uint32_t>(product) : std::nullopt;
}

std::optional<bool> IsRedirected() {
  const auto pIsWow64Process = Optional<BOOL WINAPI(HANDLE, BOOL*)>(kKernel, "IsWow64Process");
  BOOL isRedirected = FALSE;
  if (!pIsWow64Process || !pIsWow64Process(GetCurrentProcess(), &isRedirected)) return std::nullopt;
  return isRedirected != FALSE;
}

bool HasRedirectedFolder() {
  const auto pGetFolder =
      Optional<UINT WINAPI(wchar_t*, UINT)>(kKernel, "GetSystemWow64DirectoryW");
  std::array<wchar_t, MAX_PATH> folder{};
  return pGetFolder && pGetFolder(folder.data(), static_cast<UINT>(folder.size())) != 0;
}

// As the functions give it, but for a separator at the end. Nothing for an empty one.
std::optional<std::string> FolderOf(const std::wstring& text) {
  std::string folder = Narrow(text);
  while (folder.ends_with('\\')) folder.pop_back();
  return folder.empty() ? std::nullopt : std::optional(std::move(folder));
}

// The library of the shell is big, and only few queries ask for its folders: looked up, so that it
// is loaded then.
std::optional<std::string> ShellFolder(int id) {
  const auto pGetPath =
      Optional<BOOL WINAPI(HWND, wchar_t*, int, BOOL)>(L"shell32.dll", "SHGetSpecialFolderPathW");
  std::array<wchar_t, MAX_PATH + 1> path{};
  if (!pGetPath || !pGetPath(nullptr, path.data(), id, FALSE)) return std::nullopt;
  return FolderOf(path.data());
}

std::optional<std::string> FirstOpticalDrive() {
  const DWORD drives = GetLogicalDrives();
  for (DWORD i = 0; i < 26; ++i) {
    const wchar_t letter = static_cast<wchar_t>(L'A' + i);
    const wchar_t root[] = {letter, L':', L'\\', L'\0'};
    if ((drives >> i & 1) != 0 && GetDriveTypeW(root) == DRIVE_CDROM)
      return std::string{static_cast<char>(letter), ':'};
  }
  return std::nullopt;
}

class CWindowsSystemFacts final : public CSystemFacts {
 public:
  SystemFamily Family() const override { return SystemFamily::Windows; }
  std::optional<WindowsVersion> Windows() const override {
    // Of SM_TABLETPC, SM_MEDIACENTER and SM_SERVERR2: each is not 0 where it holds.
    constexpr int kTabletPc = 86, kMediaCenter = 87, kServerR2 = 89;
    WindowsVersion version;
    OSVERSIONINFOEXW info{};
    if (!ReadVersionInfo(info)) return std::nullopt;
    version.platformId = info.dwPlatformId;
    version.major = info.dwMajorVersion;
    version.minor = info.dwMinorVersion;
    version.text = Narrow(info.szCSDVersion);
    version.productType = info.wProductType;
    version.suiteMask = info.wSuiteMask;
    version.architecture = ReadSystemInfo().wProcessorArchitecture;
    version.isServerR2 = GetSystemMetrics(kServerR2) != 0;
    version.isMediaCenter = GetSystemMetrics(kMediaCenter) != 0;
    version.isTabletPc = GetSystemMetrics(kTabletPc) != 0;
    version.product = ReadProduct(info);
    return version;
  }
  SystemWidth Width() const override {
    return {.isKnown = GetModuleHandleW(kKernel) != nullptr,
            .isRedirected = IsRedirected(),
            .isWide = HasRedirectedFolder()};
  }
  std::string ComputerName() const override {
    std::array<wchar_t, MAX_COMPUTERNAME_LENGTH + 1> name{};
    DWORD size = static_cast<DWORD>(name.size());
    return GetComputerNameW(name.data(), &size) ? Narrow({name.data(), size}) : std::string();
  }
  // The numbers are CSIDL_PROGRAMS and so on of the Win32 page "CSIDL".
  std::optional<std::string> FolderPath(Folder folder) const override {
    switch (folder) {
      case Folder::Windows:
        return FolderOf(FetchText(GetWindowsDirectoryW));
      case Folder::System:
        return FolderOf(FetchText(GetSystemDirectoryW));
      case Folder::Temp:
        return FolderOf(
            FetchText([](wchar_t* buffer, DWORD size) { return GetTempPathW(size, buffer); }));
      case Folder::Programs:
        return ShellFolder(2);
      case Folder::Startup:
        return ShellFolder(7);
      case Folder::AppData:
        return ShellFolder(26);
      case Folder::CommonAppData:
        return ShellFolder(35);
      case Folder::ProgramFiles:
        return ShellFolder(38);
      case Folder::CdDrive:
        return FirstOpticalDrive();
      case Folder::Inf:
      case Folder::Desktop:
      case Folder::ProgramFiles32:
      case Folder::ProgramFiles64:
      case Folder::SystemDrive:
        break;  // no function tells them
    }
    return std::nullopt;
  }
  char PathSeparator() const override { return '\\'; }
  size_t MaxPath() const override { return MAX_PATH; }
};

}  // namespace

std::unique_ptr<CSystemFacts> MakeWindowsSystemFacts() {
  return std::make_unique<CWindowsSystemFacts>();
}

}  // namespace kestra
