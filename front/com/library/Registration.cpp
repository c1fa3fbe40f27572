#include "front/com/library/Registration.h"

#include <string>

#include "front/com/base/TypeInfo.h"
#include "front/com/library/ClassFactory.h"
#include "platform/win32/base/Optional.h"
#include "platform/win32/base/UniqueHandle.h"

namespace kestra::com {
namespace {

// Where classes are registered. HKEY_CLASSES_ROOT shows both, and hides which one is written.
struct Place {
  HKEY root;
  bool isForUser;
};
constexpr const wchar_t* kClassesPath = L"Software\\Classes\\CLSID\\";
constexpr const wchar_t* kTypesPath = L"Software\\Classes\\TypeLib\\";

Place Machine() {
  return {HKEY_LOCAL_MACHINE, false};
}
Place User() {
  return {HKEY_CURRENT_USER, true};
}

std::wstring TextOf(REFGUID guid) {
  wchar_t text[64];
  return StringFromGUID2(guid, text, 64) > 0 ? text : L"";
}

HRESULT Set(HKEY root, const std::wstring& path, const wchar_t* name, const std::wstring& text) {
  HKEY opened = nullptr;
  LSTATUS status =
      RegCreateKeyExW(root, path.c_str(), 0, nullptr, 0, KEY_SET_VALUE, nullptr, &opened, nullptr);
  const CUniqueKey key(opened);
  if (status == ERROR_SUCCESS) {
    const auto size = static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t));
    status =
        RegSetValueExW(opened, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()), size);
  }
  return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
}

HRESULT RegisterClassAt(const Place& place, const CreatableClass& creatable, REFGUID library) {
  const std::wstring path = kClassesPath + TextOf(creatable.clsid);
  const std::wstring server = path + L"\\InprocServer32";
  HRESULT result = Set(place.root, path, nullptr, creatable.name);
  if (SUCCEEDED(result)) result = Set(place.root, server, nullptr, ModulePath());
  if (SUCCEEDED(result)) result = Set(place.root, server, L"ThreadingModel", L"Apartment");
  if (SUCCEEDED(result)) result = Set(place.root, path + L"\\TypeLib", nullptr, TextOf(library));
  return result;
}

// All keys that RegisterClassAt makes, from the leaves up. RegDeleteTree is younger than the oldest
// system that we run on, and would take what others put there.
HRESULT UnregisterClassAt(const Place& place, const CreatableClass& creatable) {
  const std::wstring path = kClassesPath + TextOf(creatable.clsid);
  for (const wchar_t* leaf : {L"\\InprocServer32", L"\\TypeLib", L""}) {
    const LSTATUS status = RegDeleteKeyW(place.root, (path + leaf).c_str());
    if (status != ERROR_SUCCESS && status != ERROR_FILE_NOT_FOUND) {
      return HRESULT_FROM_WIN32(static_cast<DWORD>(status));
    }
  }
  return S_OK;
}

bool Exists(HKEY root, const std::wstring& path) {
  HKEY opened = nullptr;
  const LSTATUS status = RegOpenKeyExW(root, path.c_str(), 0, KEY_QUERY_VALUE, &opened);
  const CUniqueKey key(opened);
  return status == ERROR_SUCCESS;
}

using RegisterForUser = HRESULT WINAPI(ITypeLib*, OLECHAR*, OLECHAR*);
using UnregisterForUser = HRESULT WINAPI(REFGUID, WORD, WORD, LCID, SYSKIND);

HRESULT RegisterTypesAt(const Place& place, ITypeLib& library) {
  std::wstring path = ModulePath();
  if (!place.isForUser) return RegisterTypeLib(&library, path.data(), nullptr);
  const auto registerForUser = Optional<RegisterForUser>(L"oleaut32.dll", "RegisterTypeLibForUser");
  return registerForUser ? registerForUser(&library, path.data(), nullptr) : E_ACCESSDENIED;
}

// Asks first: systems do not agree on what the function answers when there is nothing.
HRESULT UnregisterTypesAt(const Place& place, const TLIBATTR& attributes) {
  if (!Exists(place.root, kTypesPath + TextOf(attributes.guid))) return S_OK;
  const auto unregisterForUser =
      Optional<UnregisterForUser>(L"oleaut32.dll", "UnRegisterTypeLibForUser");
  if (place.isForUser && !unregisterForUser) return S_OK;
  return (place.isForUser ? unregisterForUser : &UnRegisterTypeLib)(
      attributes.guid, attributes.wMajorVerNum, attributes.wMinorVerNum, attributes.lcid,
      attributes.syskind);
}

HRESULT RegisterAt(const Place& place, ITypeLib& library, const TLIBATTR& attributes) {
  HRESULT result = S_OK;
  for (const CreatableClass& creatable : CreatableClasses()) {
    if (SUCCEEDED(result)) result = RegisterClassAt(place, creatable, attributes.guid);
  }
  return SUCCEEDED(result) ? RegisterTypesAt(place, library) : result;
}

HRESULT UnregisterAt(const Place& place, const TLIBATTR& attributes) {
  HRESULT result = UnregisterTypesAt(place, attributes);
  for (const CreatableClass& creatable : CreatableClasses()) {
    const HRESULT removed = UnregisterClassAt(place, creatable);
    if (SUCCEEDED(result)) result = removed;
  }
  return result;
}

// The own type library, with its identity.
class COwnTypes {
 public:
  HRESULT Load() {
    const HRESULT result = LoadOwnTypeLibrary(m_library);
    return FAILED(result) ? result : m_library->GetLibAttr(&m_pAttributes);
  }
  ~COwnTypes() {
    if (m_pAttributes) m_library->ReleaseTLibAttr(m_pAttributes);
  }
  ITypeLib& Library() const { return *m_library.get(); }
  const TLIBATTR& Attributes() const { return *m_pAttributes; }

 private:
  CComPtr<ITypeLib> m_library;
  TLIBATTR* m_pAttributes = nullptr;
};

}  // namespace

HRESULT RegisterLibrary() {
  COwnTypes types;
  HRESULT result = types.Load();
  if (FAILED(result)) return result;
  for (const Place& place : {Machine(), User()}) {
    result = RegisterAt(place, types.Library(), types.Attributes());
    if (FAILED(result)) UnregisterAt(place, types.Attributes());
    // What was registered for the user before would come first.
    if (SUCCEEDED(result) && !place.isForUser) UnregisterAt(User(), types.Attributes());
    if (SUCCEEDED(result)) return result;
  }
  return result;
}

HRESULT UnregisterLibrary() {
  COwnTypes types;
  HRESULT result = types.Load();
  if (FAILED(result)) return result;
  for (const Place& place : {Machine(), User()}) {
    const HRESULT removed = UnregisterAt(place, types.Attributes());
    if (FAILED(removed)) result = removed;
  }
  return result;
}

}  // namespace kestra::com
