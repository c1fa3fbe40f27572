// The connection point of a session's events: the list of the sinks that hosts have connected.
#pragma once

#include <mutex>
#include <vector>

#include "front/com/base/Com.h"

namespace kestra::com {

// Part of the object that fires the events, which counts its references. Any thread.
class CConnectionPoint final : public IConnectionPoint {
 public:
  // The container is borrowed: it is the object that this is a member of.
  CConnectionPoint(IConnectionPointContainer& container, REFIID events)
      : m_container(container), m_events(events) {}
  CConnectionPoint(const CConnectionPoint&) = delete;
  CConnectionPoint& operator=(const CConnectionPoint&) = delete;

  // Calls a method of every sink, in the order in which they were connected, with one argument.
  // Each gets a copy of its own. What a sink answers is of no account; one that is taken off
  // meanwhile may still be called.
  void Fire(DISPID member, const VARIANT& argument) noexcept;

  STDMETHODIMP QueryInterface(REFIID iid, void** ppInterface) noexcept override;
  STDMETHODIMP_(ULONG) AddRef() noexcept override { return m_container.AddRef(); }
  STDMETHODIMP_(ULONG) Release() noexcept override { return m_container.Release(); }

  STDMETHODIMP GetConnectionInterface(IID* pIid) noexcept override;
  STDMETHODIMP GetConnectionPointContainer(
      IConnectionPointContainer** ppContainer) noexcept override;
  STDMETHODIMP Advise(IUnknown* pSink, DWORD* pCookie) noexcept override;
  STDMETHODIMP Unadvise(DWORD cookie) noexcept override;
  STDMETHODIMP EnumConnections(IEnumConnections** ppEnum) noexcept override;

 private:
  struct Sink {
    DWORD cookie;
    CComPtr<IDispatch> dispatch;
  };

  IConnectionPointContainer& m_container;
  const IID m_events;
  std::mutex m_lock;  // guards everything below
  std::vector<Sink> m_sinks;
  DWORD m_lastCookie = 0;
};

}  // namespace kestra::com
