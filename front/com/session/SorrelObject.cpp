#include "front/com/session/SorrelObject.h"

#include <memory>
#include <vector>

#include "front/com/base/Barrier.h"
#include "front/com/base/Enumerator.h"
#include "front/com/base/Text.h"
#include "front/com/results/ValueObject.h"
#include "front/com/session/TerminationEvent.h"

namespace kestra::com {
namespace {

constexpr DISPID kOnQueryComplete = 1;

struct ConnectionPointsPolicy {
  using Interface = IEnumConnectionPoints;
  using Element = IConnectionPoint*;
  using Source = CComPtr<IConnectionPoint>;
  static HRESULT Fetch(const Source& point, Element* pElement) {
    *pElement = CComPtr<IConnectionPoint>(point).Detach();
    return S_OK;
  }
  static void Clear(Element* pElement) { (*pElement)->Release(); }
};

template <class T>
void Tell(T* pPlace, T what) {
  if (pPlace) *pPlace = what;
}

HRESULT ResultOf(SessionStatus status) {
  switch (status) {
    case SessionStatus::Ok:
      return S_OK;
    case SessionStatus::Pointer:
      return E_POINTER;
    default:
      return E_FAIL;
  }
}

}  // namespace

CSorrelObject::CSorrelObject()
    : m_events(*this, __uuidof(_SorrelEvents)),
      m_pSession(std::make_unique<CSorrelCOM>()),
      m_window(*this) {
  // A window that could not be made stays away: RunQuery fails then.
  const HWND window = m_window.Handle();
  if (!window) return;
  m_pSession->AnnounceBy([window](uint32_t queryId) {
    if (IsWindow(window)) PostMessageW(window, WM_QUERY_DONE, queryId, 0);
  });
  m_pSession->SetQueryCompleteSink(
      [this](const QueryOutcome& outcome) { FireQueryComplete(outcome); });
}

// Its threads end before the window that they post to goes.
CSorrelObject::~CSorrelObject() {
  ComBarrier()([&] {
    m_pSession.reset();
    return S_OK;
  });
}

STDMETHODIMP CSorrelObject::get_DiagRoot(VARIANT* pVal) noexcept {
  if (!pVal) return E_POINTER;
  VariantInit(pVal);
  return S_OK;
}

STDMETHODIMP CSorrelObject::RunQuery(BSTR bstrQuery, long lTimeOut) noexcept {
  return ComBarrier()([&] {
    if (!m_window.Handle()) return E_FAIL;
    return ResultOf(m_pSession->RunQuery(FromBstr(bstrQuery), static_cast<uint32_t>(lTimeOut)));
  });
}

STDMETHODIMP CSorrelObject::ReInitDiagRoot() noexcept {
  return ComBarrier()([&] {
    m_pSession->ReInitDiagRoot();
    return S_OK;
  });
}

STDMETHODIMP CSorrelObject::SetPluginsDir(BSTR bstrPluginsDir) noexcept {
  return ComBarrier()([&] {
    m_pSession->SetPluginsDir(FromBstr(bstrPluginsDir));
    return S_OK;
  });
}

STDMETHODIMP CSorrelObject::ClearPlugins() noexcept {
  return ComBarrier()([&] {
    m_pSession->ClearPlugins();
    return S_OK;
  });
}

STDMETHODIMP CSorrelObject::CheckQuerySyntax(BSTR bstrQuery, long* pVal) noexcept {
  return ComBarrier(pVal)([&] {
    *pVal = 0;
    int32_t good = 0;
    const SessionStatus status = m_pSession->CheckQuerySyntax(FromBstr(bstrQuery), good);
    *pVal = good;
    return ResultOf(status);
  });
}

STDMETHODIMP CSorrelObject::Diagnose(BSTR bstrQuery, long* pbError, long* plLine, long* plColumn,
                                     BSTR* pbstrSuggestions, BSTR* pbstrSentence) noexcept {
  for (long* pNumber : {pbError, plLine, plColumn}) Tell(pNumber, 0L);
  for (BSTR* pText : {pbstrSuggestions, pbstrSentence}) Tell(pText, BSTR{});
  return ComBarrier(pbstrSentence)([&] {
    std::optional<Diagnosis> found;
    const SessionStatus status = m_pSession->DiagnoseText(FromBstr(bstrQuery), found);
    if (status != SessionStatus::Ok) return ResultOf(status);
    if (!found) return S_FALSE;
    std::string suggestions;
    for (const std::string& one : found->suggestions)
      suggestions += suggestions.empty() ? one : "\r\n" + one;
    std::unique_ptr<OLECHAR, decltype(&SysFreeString)> sentence(ToBstr(found->message),
                                                                SysFreeString);
    if (pbstrSuggestions) *pbstrSuggestions = ToBstr(suggestions);
    *pbstrSentence = sentence.release();
    Tell(pbError, found->isError ? 1L : 0L);
    Tell(plLine, static_cast<long>(found->line));
    Tell(plColumn, static_cast<long>(found->column));
    return S_OK;
  });
}

STDMETHODIMP CSorrelObject::CancelQuery() noexcept {
  return ComBarrier()([&] {
    m_pSession->CancelQuery();
    m_window.RemoveQueued();
    return S_OK;
  });
}

// Without memory for the thread this answers E_POINTER, as for a module that there is not.
STDMETHODIMP CSorrelObject::InitDiagModule(BSTR bstrModuleName, BSTR bstrModuleArgs,
                                           long bInitAlways) noexcept {
  return ComBarrier()([&] {
    try {
      return ResultOf(m_pSession->InitDiagModule(FromBstr(bstrModuleName), FromBstr(bstrModuleArgs),
                                                 bInitAlways != 0));
    } catch (const std::bad_alloc&) {
      return E_POINTER;
    }
  });
}

STDMETHODIMP CSorrelObject::AllowActive(long bAllowActive) noexcept {
  return ComBarrier()([&] {
    m_pSession->AllowActive(bAllowActive != 0);
    return S_OK;
  });
}

// A query that could not be begun at all leaves pResult as the caller gave it.
STDMETHODIMP CSorrelObject::RunQuerySync(BSTR bstrQuery, VARIANT varTerminationEvent, long lTimeOut,
                                         VARIANT* pResult) noexcept {
  return ComBarrier(pResult)([&] {
    const CTerminationEvent event(varTerminationEvent);
    QueryOutcome outcome;
    const SessionStatus status = m_pSession->RunQuerySync(FromBstr(bstrQuery), event.Handle(),
                                                          static_cast<uint32_t>(lTimeOut), outcome);
    if (status != SessionStatus::Ok || !outcome.hasValue) return ResultOf(status);
    return GiveObject<CValueObject>(pResult, std::move(outcome.value));
  });
}

STDMETHODIMP CSorrelObject::DisableAsyncMode() noexcept {
  return ComBarrier()([&] {
    m_pSession->DisableAsyncMode();
    m_window.Destroy();
    return S_OK;
  });
}

// One event for each message, so that the host's other messages get their turn. A sink may let go
// of the session, which then lives until everything here is done.
void CSorrelObject::OnQueryDone() noexcept {
  const CComPtr<ISorrelCOM> self(this);
  ComBarrier()([&] {
    m_pSession->DispatchEvents(1);
    return S_OK;
  });
}

void CSorrelObject::FireQueryComplete(const QueryOutcome& outcome) {
  VARIANT result;
  GiveObject<CValueObject>(&result, outcome.value);
  m_events.Fire(kOnQueryComplete, result);
  VariantClear(&result);
}

STDMETHODIMP CSorrelObject::EnumConnectionPoints(IEnumConnectionPoints** ppEnum) noexcept {
  return ComBarrier(ppEnum)([&] {
    *ppEnum = nullptr;
    auto points = std::make_shared<std::vector<CComPtr<IConnectionPoint>>>();
    points->emplace_back(&m_events);
    return GiveObject<CEnumerator<ConnectionPointsPolicy>>(ppEnum, std::move(points));
  });
}

STDMETHODIMP CSorrelObject::FindConnectionPoint(REFIID iid, IConnectionPoint** ppPoint) noexcept {
  if (!ppPoint) return E_POINTER;
  *ppPoint = nullptr;
  if (!IsEqualIID(iid, __uuidof(_SorrelEvents))) return CONNECT_E_NOCONNECTION;
  *ppPoint = &m_events;
  m_events.AddRef();
  return S_OK;
}

STDMETHODIMP CSorrelObject::GetClassInfo(ITypeInfo** ppInfo) noexcept {
  if (!ppInfo) return E_POINTER;
  CComPtr<ITypeInfo> info;
  const HRESULT result = TypeInfoOf(__uuidof(SorrelCOM), info);
  *ppInfo = info.Detach();
  return result;
}

STDMETHODIMP CSorrelObject::GetGUID(DWORD kind, GUID* pGuid) noexcept {
  if (!pGuid) return E_POINTER;
  if (kind != GUIDKIND_DEFAULT_SOURCE_DISP_IID) return E_INVALIDARG;
  *pGuid = __uuidof(_SorrelEvents);
  return S_OK;
}

// The second of them has the first below it.
void* CSorrelObject::Find(REFIID iid) noexcept {
  if (IsEqualIID(iid, __uuidof(IProvideClassInfo))) return static_cast<IProvideClassInfo*>(this);
  return CDispatchObject::Find(iid);
}

}  // namespace kestra::com
