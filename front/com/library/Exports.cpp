// What KESTRA.DLL exports: KESTRA.def names the functions.
#include <string>

#include "VLib/src/log/Log.h"
#include "front/com/SORRELLib.h"
#include "front/com/base/Barrier.h"
#include "front/com/base/Text.h"
#include "front/com/library/ClassFactory.h"
#include "front/com/library/Registration.h"
#include "front/com/session/HiddenWindow.h"
#include "front/session/Sorrel.h"
#include "model/classes/Class.h"
#include "model/dump/Dump.h"
#include "model/root/GetDiagRoot.h"
#include "platform/win32/base/UniqueHandle.h"

using namespace kestra;
using namespace kestra::com;

namespace {

// The class tree as text; empty when there is no root.
std::string TypeText() {
  const SessionSetup setup = LiveSetup();
  const Ref<DiagRoot> root = GetDiagRoot("*", "", setup.modules, setup.machine);
  std::string text;
  if (root) DumpType(*root->GetTypeInfo(), text);
  return text;
}

HRESULT WriteTypeText(const char* fileName) {
  const std::string text = TypeText();
  if (text.empty()) return E_FAIL;
  const CUniqueHandle file(CreateFileA(fileName, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                       nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!file) return HRESULT_FROM_WIN32(LastError());
  DWORD written = 0;
  WriteFile(file.get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
  return S_OK;
}

HRESULT GiveIds(GUID* clsid, GUID* eventIid, REFGUID classId, REFGUID eventsId) {
  if (clsid) *clsid = classId;
  if (eventIid) *eventIid = eventsId;
  return S_OK;
}

}  // namespace

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** ppObject) {
  return ComBarrier(ppObject)([&]() -> HRESULT {
    *ppObject = nullptr;
    for (const CreatableClass& creatable : CreatableClasses()) {
      if (!IsEqualCLSID(creatable.clsid, clsid)) continue;
      const CComPtr<IClassFactory> factory = [&] {
        CComPtr<IClassFactory> made;
        GiveObject<CClassFactory>(made.Place(), creatable);
        return made;
      }();
      return factory->QueryInterface(iid, ppObject);
    }
    return CLASS_E_CLASSNOTAVAILABLE;
  });
}

STDAPI DllCanUnloadNow() {
  return CModuleLock::Count() == 0 ? S_OK : S_FALSE;
}

STDAPI DllRegisterServer() {
  return ComBarrier()([] { return RegisterLibrary(); });
}

STDAPI DllUnregisterServer() {
  return ComBarrier()([] { return UnregisterLibrary(); });
}

// For hosts that bind to the library without its type library. Either place may be null.
STDAPI DllGetCLSIDs(GUID* clsid, GUID* eventIid) {
  return GiveIds(clsid, eventIid, __uuidof(SorrelCOM), __uuidof(_SorrelEvents));
}

STDAPI DllGetFRCLSIDs(GUID* clsid, GUID* eventIid) {
  return GiveIds(clsid, eventIid, __uuidof(LanternCOM), __uuidof(_ILanternPostEvents));
}

// rundll32 KESTRA.DLL,GenerateTypeInfo FILE: writes what all modules declare into a file, as XML.
// Does nothing, and says nothing, when that is not possible.
extern "C" void CALLBACK GenerateTypeInfo(HWND, HINSTANCE, LPSTR fileName, int) {
  if (!fileName) return;
  ComBarrier()([&] { return WriteTypeText(fileName); });
}

// The log is opened here, so that its first line says when the library came into the process. While
// a thread of ours runs the library stays loaded, so that nobody uses what is dropped at the end.
// At the end of the process nothing is cleaned up: threads have been ended wherever they were.
extern "C" BOOL WINAPI DllMain(HINSTANCE module, DWORD reason, LPVOID isProcessEnding) {
  if (reason == DLL_PROCESS_ATTACH) {
    ComBarrier()([] {
      OpenGlobalLog();
      return S_OK;
    });
  } else if (reason == DLL_PROCESS_DETACH && !isProcessEnding) {
    CHiddenWindow::UnregisterWindowClass(module);
    DropClasses();
  }
  return TRUE;
}
