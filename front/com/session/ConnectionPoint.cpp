#include "front/com/session/ConnectionPoint.h"

#include <memory>

#include "front/com/base/Barrier.h"
#include "front/com/base/Enumerator.h"

namespace kestra::com {
namespace {

struct ConnectionsPolicy {
  using Interface = IEnumConnections;
  using Element = CONNECTDATA;
  struct Source {
    DWORD cookie;
    CComPtr<IDispatch> dispatch;
  };
  static HRESULT Fetch(const Source& source, CONNECTDATA* pElement) {
    *pElement = {CComPtr<IDispatch>(source.dispatch).Detach(), source.cookie};
    return S_OK;
  }
  static void Clear(CONNECTDATA* pElement) { pElement->pUnk->Release(); }
};

void CallSink(IDispatch& sink, DISPID member, const VARIANT& argument) {
  VARIANT copy;
  VariantInit(&copy);
  if (FAILED(VariantCopy(&copy, const_cast<VARIANT*>(&argument)))) return;
  DISPPARAMS params{&copy, nullptr, 1, 0};
  // A sink in C++ may throw.
  ComBarrier()([&] {
    return sink.Invoke(member, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params, nullptr,
                       nullptr, nullptr);
  });
  VariantClear(&copy);
}

// Sinks written by hand often answer IDispatch alone.
CComPtr<IDispatch> SinkOf(IUnknown& unknown, REFIID events) {
  CComPtr<IDispatch> sink;
  void** place = reinterpret_cast<void**>(sink.Place());
  if (FAILED(unknown.QueryInterface(events, place))) {
    unknown.QueryInterface(__uuidof(IDispatch), place);
  }
  return sink;
}

}  // namespace

void CConnectionPoint::Fire(DISPID member, const VARIANT& argument) noexcept {
  ComBarrier()([&] {
    std::vector<Sink> sinks;  // a sink may connect and disconnect while it is called
    {
      std::lock_guard lock(m_lock);
      sinks = m_sinks;
    }
    for (const Sink& sink : sinks) CallSink(*sink.dispatch.get(), member, argument);
    return S_OK;
  });
}

STDMETHODIMP CConnectionPoint::QueryInterface(REFIID iid, void** ppInterface) noexcept {
  if (!ppInterface) return E_POINTER;
  *ppInterface = nullptr;
  if (!IsEqualIID(iid, __uuidof(IUnknown)) && !IsEqualIID(iid, __uuidof(IConnectionPoint))) {
    return E_NOINTERFACE;
  }
  *ppInterface = static_cast<IConnectionPoint*>(this);
  AddRef();
  return S_OK;
}

STDMETHODIMP CConnectionPoint::GetConnectionInterface(IID* pIid) noexcept {
  if (!pIid) return E_POINTER;
  *pIid = m_events;
  return S_OK;
}

STDMETHODIMP CConnectionPoint::GetConnectionPointContainer(
    IConnectionPointContainer** ppContainer) noexcept {
  if (!ppContainer) return E_POINTER;
  *ppContainer = &m_container;
  m_container.AddRef();
  return S_OK;
}

STDMETHODIMP CConnectionPoint::Advise(IUnknown* pSink, DWORD* pCookie) noexcept {
  return ComBarrier(pSink, pCookie)([&]() -> HRESULT {
    *pCookie = 0;
    CComPtr<IDispatch> sink = SinkOf(*pSink, m_events);
    if (!sink) return CONNECT_E_CANNOTCONNECT;
    std::lock_guard lock(m_lock);
    m_sinks.push_back({++m_lastCookie, std::move(sink)});
    *pCookie = m_lastCookie;
    return S_OK;
  });
}

STDMETHODIMP CConnectionPoint::Unadvise(DWORD cookie) noexcept {
  CComPtr<IDispatch> removed;  // released without the lock: that may call anything
  std::lock_guard lock(m_lock);
  for (auto sink = m_sinks.begin(); sink != m_sinks.end(); ++sink) {
    if (sink->cookie != cookie) continue;
    removed = std::move(sink->dispatch);
    m_sinks.erase(sink);
    return S_OK;
  }
  return CONNECT_E_NOCONNECTION;
}

STDMETHODIMP CConnectionPoint::EnumConnections(IEnumConnections** ppEnum) noexcept {
  return ComBarrier(ppEnum)([&] {
    *ppEnum = nullptr;
    auto sources = std::make_shared<std::vector<ConnectionsPolicy::Source>>();
    std::lock_guard lock(m_lock);
    for (const Sink& sink : m_sinks) sources->push_back({sink.cookie, sink.dispatch});
    return GiveObject<CEnumerator<ConnectionsPolicy>>(ppEnum, std::move(sources));
  });
}

}  // namespace kestra::com
