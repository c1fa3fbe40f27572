// A host, as one is written in C++: it loads the library by its path, binds by what DllGetCLSIDs
// says, and knows nothing of the engine.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "front/com/SORRELLib.h"
#include "front/com/base/Com.h"

namespace kestra::test {

using com::CComPtr;

// A query that goes on until it is ended.
constexpr const wchar_t* kSlow = L"SELECT COUNT(*) FROM Slow(Duration=60000).Entry";

// The library, loaded as long as the object lives. Its objects must be gone by then.
class CLibrary {
 public:
  CLibrary();
  ~CLibrary() { Unload(); }
  CLibrary(const CLibrary&) = delete;
  CLibrary& operator=(const CLibrary&) = delete;

  template <class Function>
  Function* Export(const char* name) const {
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(GetProcAddress(m_module, name)));
  }
  HRESULT ClassObject(REFCLSID clsid, REFIID iid, void** ppObject) const;
  CComPtr<ISorrelCOM> MakeSession() const;
  // While any object is alive.
  bool IsInUse() const;
  void SetAngry(bool angry) const { Export<void(int)>("SetAngry")(angry ? 1 : 0); }
  // Whether it has gone from the process then. A thread of it that has just ended may take a
  // moment.
  bool Unload();

 private:
  HMODULE m_module;
};

// COM on the test's thread, which pumps messages.
class CApartment {
 public:
  CApartment() { CoInitialize(nullptr); }
  ~CApartment() { CoUninitialize(); }
};

// Collects the texts of OnQueryComplete.
class CSink final : public IDispatch {
 public:
  struct Event {
    std::wstring text;
    DWORD threadId;
  };
  std::vector<Event> events;
  std::function<void()> onEvent;  // called while the event is fired

  STDMETHODIMP QueryInterface(REFIID iid, void** ppInterface) override;
  STDMETHODIMP_(ULONG) AddRef() override { return ++m_references; }
  STDMETHODIMP_(ULONG) Release() override { return --m_references; }
  STDMETHODIMP GetTypeInfoCount(UINT*) override { return E_NOTIMPL; }
  STDMETHODIMP GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override { return E_NOTIMPL; }
  STDMETHODIMP Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* pParams, VARIANT*, EXCEPINFO*,
                      UINT*) override;
  ULONG References() const { return m_references; }

 private:
  ULONG m_references = 0;
};

// A BSTR that is freed.
class CBstr {
 public:
  CBstr() = default;
  explicit CBstr(const wchar_t* text) : m_text(SysAllocString(text)) {}
  ~CBstr() { SysFreeString(m_text); }
  CBstr(const CBstr&) = delete;
  CBstr& operator=(const CBstr&) = delete;
  BSTR get() const { return m_text; }
  BSTR* Place() { return &m_text; }
  std::wstring Text() const { return {m_text ? m_text : L"", SysStringLen(m_text)}; }

 private:
  BSTR m_text = nullptr;
};

// Pumps messages until the sink has that many events, or the time is over; whether it has them.
bool PumpUntil(const CSink& sink, size_t count, DWORD timeOutMs);
void PumpFor(DWORD timeOutMs);

DWORD Advise(ISorrelCOM& session, CSink& sink);
void Unadvise(ISorrelCOM& session, DWORD cookie);

VARIANT NoEvent();
// A result as IValueCOM; null if there is none.
CComPtr<IValueCOM> RunValue(ISorrelCOM& session, const wchar_t* query);
// The same for a list or rows: the first element of the first.
CComPtr<IValueCOM> RunFirst(ISorrelCOM& session, const wchar_t* query);
std::wstring TextOf(IValueCOM& value);
std::wstring RunText(ISorrelCOM& session, const wchar_t* query);
// The only object in a vector of one row and one column, or the value itself.
CComPtr<IDiagItem> FirstItem(ISorrelCOM& session, const wchar_t* query);

template <class Interface>
CComPtr<Interface> As(IUnknown* pUnknown) {
  CComPtr<Interface> result;
  if (pUnknown) {
    pUnknown->QueryInterface(__uuidof(Interface), reinterpret_cast<void**>(result.Place()));
  }
  return result;
}

}  // namespace kestra::test
