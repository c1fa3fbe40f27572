// The system's own registry, below a key of the test's own.
#include <gtest/gtest.h>

#include <array>
#include <set>

#include "platform/machine/Registry.h"
#include "platform/os/Clock.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"
#include "platform/win32/base/Wide.h"
#include "platform/win32/machine/Facilities.h"

namespace kestra {
namespace {

constexpr uint32_t kAll = kKeyQueryValue | kKeySetValue | kKeyCreateSubKey | kKeyEnumerateSubKeys;

class WindowsRegistry : public testing::Test {
 protected:
  WindowsRegistry() {
    EXPECT_EQ(registry->OpenRoot(RegistryRoot::CurrentUser, root), kErrorSuccess);
    EXPECT_EQ(root->CreateSubKey(path, kAll, key), kErrorSuccess);
  }
  ~WindowsRegistry() override { RegDeleteTreeW(HKEY_CURRENT_USER, Wide(path).c_str()); }

  const std::string path = "Software\\Kestra test " + std::to_string(GetCurrentProcessId());
  const std::unique_ptr<CRegistry> registry = MakeWindowsRegistry();
  std::unique_ptr<CRegistryKey> root, key;
};

std::set<std::string> SubKeys(CRegistryKey& key) {
  std::set<std::string> names;
  std::string name;
  uint32_t i = 0;
  while (key.EnumSubKey(i, name) == kErrorSuccess && ++i < 1000) names.insert(name);
  EXPECT_EQ(key.EnumSubKey(i, name), kErrorNoMoreItems);
  return names;
}

TEST_F(WindowsRegistry, ValuesOfEveryTypeComeBackAsStored) {
  const std::string umlaut = "\xc3\xa4\xf0\x9f\x98\x80";
  const struct {
    std::string name;
    uint32_t type;
    std::string data;
  } cases[] = {
      {"", kRegSz, std::string("default\0", 8)},
      {"sz", kRegSz, umlaut + '\0'},
      {"no end", kRegSz, "abc"},
      {"empty", kRegSz, ""},
      {"inside", kRegSz, std::string("a\0b\0", 4)},
      {"expand", kRegExpandSz, std::string("%windir%\0", 9)},
      {"multi", kRegMultiSz, std::string("one\0\xc3\xa4\0\0", 9)},
      {"multi open", kRegMultiSz, std::string("one\0two", 7)},
      {"none", kRegNone, std::string("\xff\0\x01", 3)},
      {"binary", kRegBinary, std::string("\xff\0\xc3\xa4", 4)},
      {"dword", kRegDword, std::string("\x01\x02\x03\x84", 4)},
      {"big endian", kRegDwordBigEndian, std::string("\0\0\0\1", 4)},
      {"link", kRegLink, std::string("a\0b\0", 4)},
      {"list", kRegResourceList, "abc"},
      {"qword", kRegQword, std::string("12345678")},
      {"strange", 0x80000001, "xy"},
      {umlaut, kRegBinary, ""},
      {"large", kRegSz, std::string(300'000, 'x') + '\0'},
      {std::string(255, 'n'), kRegDword, "1234"},
  };
  for (const auto& c : cases) EXPECT_EQ(key->SetValue(c.name, c.type, c.data), kErrorSuccess);
  std::set<std::string> names;
  std::string name;
  for (uint32_t i = 0; key->EnumValue(i, name) == kErrorSuccess && i < 100; ++i) names.insert(name);
  EXPECT_EQ(names.size(), std::size(cases));
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string data;
    uint32_t type = 77;
    EXPECT_EQ(key->QueryValue(c.name, type, data), kErrorSuccess);
    EXPECT_EQ(type, c.type);
    EXPECT_EQ(data.substr(0, 100), c.data.substr(0, 100));
    EXPECT_EQ(data.size(), c.data.size());
    EXPECT_TRUE(names.count(c.name));
  }
  RegistryKeyInfo info;
  EXPECT_EQ(key->QueryInfo(info), kErrorSuccess);
  EXPECT_EQ(info.valueCount, std::size(cases));
  EXPECT_EQ(info.subKeyCount, 0u);
  EXPECT_NEAR(static_cast<double>(info.lastWriteTime.ticks),
              static_cast<double>(os::SystemTimeAsFileTime().ticks), 6e8);
}

TEST_F(WindowsRegistry, TextThatIsNoText) {
  const BYTE odd[] = {'a', 0, 'b', 0, 'c'}, half[] = {'a', 0, 0, 0xD8};
  HKEY plain = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, Wide(path).c_str(), 0, KEY_SET_VALUE, &plain), 0);
  const CUniqueKey owner(plain);
  RegSetValueExW(plain, L"odd", 0, REG_SZ, odd, sizeof odd);
  RegSetValueExW(plain, L"half", 0, REG_SZ, half, sizeof half);
  uint32_t type = 0;
  std::string data;
  EXPECT_EQ(key->QueryValue("odd", type, data), kErrorSuccess);
  EXPECT_EQ(data, "ab");
  EXPECT_EQ(key->QueryValue("half", type, data), kErrorSuccess);
  EXPECT_EQ(data, "a\xed\xa0\x80");
}

TEST_F(WindowsRegistry, TellsWhatIsNotThere) {
  std::unique_ptr<CRegistryKey> other;
  std::string data, nul("a\0b", 3);
  uint32_t type = 0;
  EXPECT_EQ(key->OpenSubKey("none", kKeyQueryValue, other), kErrorFileNotFound);
  EXPECT_EQ(key->OpenSubKey("none\\none", kKeyQueryValue, other), kErrorFileNotFound);
  EXPECT_EQ(key->OpenLinkItself("none", kKeyQueryValue, other), kErrorFileNotFound);
  EXPECT_EQ(key->DeleteSubKey("none", 0), kErrorFileNotFound);
  EXPECT_EQ(key->QueryValue("none", type, data), kErrorFileNotFound);
  EXPECT_EQ(key->DeleteValue("none"), kErrorFileNotFound);
  EXPECT_EQ(key->EnumValue(0, data), kErrorNoMoreItems);
  EXPECT_EQ(key->OpenSubKey(nul, kKeyQueryValue, other), kErrorInvalidName);
  EXPECT_EQ(key->QueryValue(nul, type, data), kErrorInvalidName);
  EXPECT_EQ(key->SetValue(nul, kRegSz, ""), kErrorInvalidName);
  for (const RegistryRoot gone : {RegistryRoot::PerformanceData, RegistryRoot::DynData})
    EXPECT_EQ(registry->OpenRoot(gone, other), kErrorFileNotFound);
  for (const RegistryRoot kept : {RegistryRoot::ClassesRoot, RegistryRoot::LocalMachine,
                                  RegistryRoot::Users, RegistryRoot::CurrentConfig})
    EXPECT_EQ(registry->OpenRoot(kept, other), kErrorSuccess);
}

TEST_F(WindowsRegistry, MakesAndDeletesKeys) {
  std::unique_ptr<CRegistryKey> made;
  const std::string longName(255, 'k');
  ASSERT_EQ(key->CreateSubKey("A\\B", kKeyQueryValue, made), kErrorSuccess);
  EXPECT_EQ(made->SetValue("x", kRegDword, "1234"), kErrorAccessDenied);
  ASSERT_EQ(key->CreateSubKey(longName, kAll, made), kErrorSuccess);
  EXPECT_EQ(SubKeys(*key), (std::set<std::string>{"A", longName}));
  EXPECT_EQ(key->DeleteSubKey("A", 0), kErrorAccessDenied);
  EXPECT_EQ(key->DeleteSubKey("A\\B", 0), kErrorSuccess);
  EXPECT_EQ(key->DeleteSubKey("A", 0), kErrorSuccess);
  EXPECT_EQ(key->DeleteSubKey(longName, 0), kErrorSuccess);
  EXPECT_EQ(made->SetValue("x", kRegDword, "1234"), kErrorKeyDeleted);
  EXPECT_EQ(SubKeys(*key), std::set<std::string>{});
}

// Needs an administrator.
TEST_F(WindowsRegistry, TheTwoViewsAreTwoKeys) {
  std::unique_ptr<CRegistryKey> machine, narrow, wide;
  ASSERT_EQ(registry->OpenRoot(RegistryRoot::LocalMachine, machine), kErrorSuccess);
  ASSERT_EQ(machine->CreateSubKey(path, kAll | kKeyWow64Key32, narrow), kErrorSuccess);
  EXPECT_EQ(machine->OpenSubKey(path, kAll | kKeyWow64Key64, wide), kErrorFileNotFound);
  ASSERT_EQ(machine->CreateSubKey(path, kAll | kKeyWow64Key64, wide), kErrorSuccess);
  EXPECT_EQ(narrow->SetValue("x", kRegDword, "1234"), kErrorSuccess);
  std::string data;
  uint32_t type = 0;
  EXPECT_EQ(wide->QueryValue("x", type, data), kErrorFileNotFound);
  EXPECT_EQ(machine->DeleteSubKey(path, kKeyWow64Key32), kErrorSuccess);
  EXPECT_EQ(machine->OpenSubKey(path, kAll | kKeyWow64Key32, narrow), kErrorFileNotFound);
  EXPECT_EQ(machine->OpenSubKey(path, kAll | kKeyWow64Key64, wide), kErrorSuccess);
  EXPECT_EQ(machine->DeleteSubKey(path, kKeyWow64Key64), kErrorSuccess);
}

// The path by which the kernel knows a key, which is what a link holds. Source: the page of
// ZwQueryKey, KEY_NAME_INFORMATION.
std::wstring KernelPath(HKEY key) {
  constexpr int kKeyNameInformation = 3;
  const auto pQueryKey =
      Optional<LONG WINAPI(HANDLE, int, void*, ULONG, ULONG*)>(L"ntdll.dll", "NtQueryKey");
  std::array<ULONG, 1024> buffer{};
  ULONG size = 0;
  if (!pQueryKey || pQueryKey(key, kKeyNameInformation, buffer.data(), sizeof buffer, &size) != 0)
    return {};
  return {reinterpret_cast<const wchar_t*>(&buffer[1]), buffer[0] / sizeof(wchar_t)};
}

// A link that goes with the test, however that ends: what deletes a tree might follow it.
class CTestLink {
 public:
  explicit CTestLink(HKEY link) : m_link(link) {}
  ~CTestLink() {
    const auto pDeleteKey = Optional<LONG WINAPI(HANDLE)>(L"ntdll.dll", "NtDeleteKey");
    if (pDeleteKey) pDeleteKey(m_link.get());
  }

 private:
  CUniqueKey m_link;
};

TEST_F(WindowsRegistry, NothingIsNoPathToDeleteOrToCloseBy) {
  std::unique_ptr<CRegistryKey> other;
  for (const char* pPath : {"", "\\", "\\\\"}) {
    EXPECT_EQ(key->DeleteSubKey(pPath, 0), kErrorInvalidParameter) << pPath;
    EXPECT_EQ(root->OpenSubKey(pPath, kKeyQueryValue, other), kErrorInvalidParameter) << pPath;
    EXPECT_EQ(root->CreateSubKey(pPath, kKeyQueryValue, other), kErrorInvalidParameter) << pPath;
  }
  EXPECT_EQ(key->OpenSubKey("", kKeyQueryValue, other), kErrorSuccess);
  EXPECT_EQ(root->OpenSubKey(path, kKeyQueryValue, other), kErrorSuccess);
}

TEST_F(WindowsRegistry, ALinkIsOpenedAndDeletedItself) {
  std::unique_ptr<CRegistryKey> found, target;
  ASSERT_EQ(key->CreateSubKey("Target\\Below", kAll, target), kErrorSuccess);
  HKEY opened = nullptr, link = nullptr;
  ASSERT_EQ(RegOpenKeyExW(HKEY_CURRENT_USER, Wide(path + "\\Target").c_str(), 0, KEY_QUERY_VALUE,
                          &opened),
            0);
  const CUniqueKey targetOwner(opened);
  // Windows follows no link that leads from a user's keys to the machine's.
  const std::wstring leads = KernelPath(opened);
  ASSERT_FALSE(leads.empty());
  ASSERT_EQ(RegCreateKeyExW(HKEY_CURRENT_USER, Wide(path + "\\Link").c_str(), 0, nullptr,
                            REG_OPTION_CREATE_LINK | REG_OPTION_VOLATILE,
                            KEY_SET_VALUE | KEY_CREATE_LINK | DELETE, nullptr, &link, nullptr),
            0);
  const CTestLink owner(link);
  ASSERT_EQ(RegSetValueExW(link, L"SymbolicLinkValue", 0, REG_LINK,
                           reinterpret_cast<const BYTE*>(leads.data()),
                           static_cast<DWORD>(leads.size() * sizeof(wchar_t))),
            0);
  ASSERT_EQ(key->OpenSubKey("Link", kAll, found), kErrorSuccess);
  EXPECT_EQ(SubKeys(*found), std::set<std::string>{"Below"});
  ASSERT_EQ(key->OpenLinkItself("Link", kKeyQueryValue | kKeyEnumerateSubKeys, found),
            kErrorSuccess);
  EXPECT_EQ(SubKeys(*found), std::set<std::string>{});
  uint32_t type = 0;
  std::string data;
  EXPECT_EQ(found->QueryValue("SymbolicLinkValue", type, data), kErrorSuccess);
  EXPECT_EQ(type, kRegLink);
  EXPECT_EQ(key->DeleteSubKey("Link", 0), kErrorSuccess);
  EXPECT_EQ(SubKeys(*key), std::set<std::string>{"Target"});
  EXPECT_EQ(key->OpenSubKey("Target\\Below", kKeyQueryValue, found), kErrorSuccess);
}

}  // namespace
}  // namespace kestra
