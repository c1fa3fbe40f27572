#include "tests/front/com/Host.h"

namespace kestra::test {
namespace {

using GetIds = HRESULT STDAPICALLTYPE(GUID*, GUID*);
using GetClassObject = HRESULT STDAPICALLTYPE(REFCLSID, REFIID, void**);
using CanUnloadNow = HRESULT STDAPICALLTYPE();

CComPtr<IConnectionPoint> PointOf(ISorrelCOM& session) {
  CComPtr<IConnectionPoint> point;
  if (const auto container = As<IConnectionPointContainer>(&session)) {
    container->FindConnectionPoint(__uuidof(_SorrelEvents), point.Place());
  }
  return point;
}

}  // namespace

CLibrary::CLibrary() : m_module(LoadLibraryW(KESTRA_TEST_SERVER)) {
  EXPECT_NE(m_module, nullptr) << GetLastError();
}

HRESULT CLibrary::ClassObject(REFCLSID clsid, REFIID iid, void** ppObject) const {
  return Export<GetClassObject>("DllGetClassObject")(clsid, iid, ppObject);
}

CComPtr<ISorrelCOM> CLibrary::MakeSession() const {
  CComPtr<ISorrelCOM> session;
  CComPtr<IClassFactory> factory;
  GUID clsid{}, events{};
  EXPECT_EQ(Export<GetIds>("DllGetCLSIDs")(&clsid, &events), S_OK);
  EXPECT_TRUE(IsEqualGUID(events, __uuidof(_SorrelEvents)));
  EXPECT_EQ(ClassObject(clsid, __uuidof(IClassFactory), reinterpret_cast<void**>(factory.Place())),
            S_OK);
  if (!factory) return session;
  EXPECT_EQ(factory->CreateInstance(nullptr, __uuidof(ISorrelCOM),
                                    reinterpret_cast<void**>(session.Place())),
            S_OK);
  return session;
}

bool CLibrary::IsInUse() const {
  return Export<CanUnloadNow>("DllCanUnloadNow")() != S_OK;
}

bool CLibrary::Unload() {
  if (m_module) FreeLibrary(std::exchange(m_module, nullptr));
  for (int i = 0; i < 100 && GetModuleHandleW(KESTRA_TEST_SERVER); ++i) Sleep(10);
  return GetModuleHandleW(KESTRA_TEST_SERVER) == nullptr;
}

STDMETHODIMP CSink::QueryInterface(REFIID iid, void** ppInterface) {
  const bool isKnown = IsEqualIID(iid, __uuidof(IUnknown)) ||
                       IsEqualIID(iid, __uuidof(IDispatch)) ||
                       IsEqualIID(iid, __uuidof(_SorrelEvents));
  *ppInterface = isKnown ? this : nullptr;
  if (!isKnown) return E_NOINTERFACE;
  AddRef();
  return S_OK;
}

STDMETHODIMP CSink::Invoke(DISPID member, REFIID, LCID, WORD, DISPPARAMS* pParams, VARIANT*,
                           EXCEPINFO*, UINT*) {
  if (member != 1 || pParams->cArgs != 1 || pParams->rgvarg[0].vt != VT_DISPATCH) return E_FAIL;
  const auto value = As<IValueCOM>(pParams->rgvarg[0].pdispVal);
  events.push_back({value ? TextOf(*value.get()) : L"no value", GetCurrentThreadId()});
  if (onEvent) onEvent();
  return E_FAIL;  // of no account
}

bool PumpUntil(const CSink& sink, size_t count, DWORD timeOutMs) {
  const DWORD start = GetTickCount();
  while (sink.events.size() < count) {
    if (GetTickCount() - start >= timeOutMs) return false;
    PumpFor(10);
  }
  return true;
}

void PumpFor(DWORD timeOutMs) {
  MsgWaitForMultipleObjects(0, nullptr, FALSE, timeOutMs, QS_ALLINPUT);
  MSG message;
  while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) DispatchMessageW(&message);
}

DWORD Advise(ISorrelCOM& session, CSink& sink) {
  DWORD cookie = 0;
  EXPECT_EQ(PointOf(session)->Advise(&sink, &cookie), S_OK);
  return cookie;
}

void Unadvise(ISorrelCOM& session, DWORD cookie) {
  EXPECT_EQ(PointOf(session)->Unadvise(cookie), S_OK);
}

VARIANT NoEvent() {
  VARIANT none;
  VariantInit(&none);
  return none;
}

CComPtr<IValueCOM> RunValue(ISorrelCOM& session, const wchar_t* query) {
  VARIANT result = NoEvent();
  EXPECT_EQ(session.RunQuerySync(CBstr(query).get(), NoEvent(), -1, &result), S_OK);
  if (result.vt != VT_DISPATCH) return {};
  const auto value = As<IValueCOM>(result.pdispVal);
  VariantClear(&result);
  return value;
}

std::wstring TextOf(IValueCOM& value) {
  CBstr text;
  EXPECT_EQ(value.get_asString(text.Place()), S_OK);
  return text.Text();
}

std::wstring RunText(ISorrelCOM& session, const wchar_t* query) {
  const auto value = RunValue(session, query);
  return value ? TextOf(*value.get()) : L"no value";
}

CComPtr<IValueCOM> RunFirst(ISorrelCOM& session, const wchar_t* query) {
  CComPtr<IValueCOM> value = RunValue(session, query);
  CComPtr<IDispatch> inner, first;
  while (value && SUCCEEDED(value->get_asVector(inner.Place()))) {
    EXPECT_EQ(As<IValuesCOM>(inner.get())->get_Value(0, first.Place()), S_OK);
    value = As<IValueCOM>(first.get());
    inner = {};
    first = {};
  }
  return value;
}

CComPtr<IDiagItem> FirstItem(ISorrelCOM& session, const wchar_t* query) {
  const auto value = RunFirst(session, query);
  CComPtr<IDispatch> item;
  if (value) value->get_asVDIagItem(item.Place());
  return As<IDiagItem>(item.get());
}

}  // namespace kestra::test
