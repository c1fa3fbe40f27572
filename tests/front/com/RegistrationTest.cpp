// Registration where the machine's part of the registry cannot be written: it is the user's then.
#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

using Server = HRESULT STDAPICALLTYPE();
constexpr const wchar_t* kClass =
    L"Software\\Classes\\CLSID\\{511A59C1-2C14-4894-BCCD-5ECCFA1D3FF8}\\InprocServer32";
constexpr const wchar_t* kTypes =
    L"Software\\Classes\\TypeLib\\{7C42EBB5-02F1-40B9-A9E9-4D197F8DCCE8}\\1.0";

bool Exists(HKEY root, const wchar_t* path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(root, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  RegCloseKey(key);
  return true;
}

// Lets nothing be made in the machine's part by this process. Wine does not look at the rights of a
// key's handle, so a volatile key stands in, below which no lasting one can be made.
class CClosedMachine {
 public:
  CClosedMachine() {
    RegCreateKeyExW(HKEY_CURRENT_USER, kName, 0, nullptr, REG_OPTION_VOLATILE, KEY_ALL_ACCESS,
                    nullptr, &m_key, nullptr);
    EXPECT_EQ(RegOverridePredefKey(HKEY_LOCAL_MACHINE, m_key), ERROR_SUCCESS);
  }
  ~CClosedMachine() {
    RegOverridePredefKey(HKEY_LOCAL_MACHINE, nullptr);
    RegCloseKey(m_key);
    RegDeleteKeyW(HKEY_CURRENT_USER, kName);
  }

 private:
  static constexpr const wchar_t* kName = L"Software\\KestraClosedMachine";
  HKEY m_key = nullptr;
};

TEST(Registration, IsTheUsersWithoutTheRightToTheMachine) {
  const CApartment apartment;
  const CLibrary library;
  auto* const registerServer = library.Export<Server>("DllRegisterServer");
  auto* const unregisterServer = library.Export<Server>("DllUnregisterServer");
  ASSERT_FALSE(Exists(HKEY_CURRENT_USER, kClass));
  {
    const CClosedMachine closed;
    HKEY refused = nullptr;
    ASSERT_NE(RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"KestraRefused", 0, nullptr, 0, KEY_WRITE,
                              nullptr, &refused, nullptr),
              ERROR_SUCCESS);
    EXPECT_EQ(registerServer(), S_OK);
    EXPECT_TRUE(Exists(HKEY_CURRENT_USER, kClass));
    EXPECT_EQ(unregisterServer(), S_OK);
  }
  // Wine registers a type library "for the user" for the machine all the same.
  EXPECT_EQ(unregisterServer(), S_OK);
  EXPECT_FALSE(Exists(HKEY_CURRENT_USER, kClass));
  EXPECT_FALSE(Exists(HKEY_CURRENT_USER, kTypes));
  EXPECT_FALSE(Exists(HKEY_LOCAL_MACHINE, kClass));
  EXPECT_FALSE(Exists(HKEY_LOCAL_MACHINE, kTypes));
}

TEST(Registration, ForTheMachineTakesTheUsersAway) {
  const CApartment apartment;
  const CLibrary library;
  {
    const CClosedMachine closed;
    ASSERT_EQ(library.Export<Server>("DllRegisterServer")(), S_OK);
  }
  EXPECT_EQ(library.Export<Server>("DllRegisterServer")(), S_OK);
  EXPECT_TRUE(Exists(HKEY_LOCAL_MACHINE, kClass));
  EXPECT_TRUE(Exists(HKEY_LOCAL_MACHINE, kTypes));
  EXPECT_FALSE(Exists(HKEY_CURRENT_USER, kClass));
  for (int i = 0; i < 2; ++i) {  // the second time there is nothing to take away
    EXPECT_EQ(library.Export<Server>("DllUnregisterServer")(), S_OK);
    EXPECT_FALSE(Exists(HKEY_LOCAL_MACHINE, kClass));
    EXPECT_FALSE(Exists(HKEY_LOCAL_MACHINE, kTypes));
  }
}

}  // namespace
}  // namespace kestra::test
