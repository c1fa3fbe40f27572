// SorrelCOM: a query session as a COM object. What it does is CSorrelCOM's; here are the binding,
// the hidden window and the events.
//
// It belongs to the apartment that made it, which has to pump messages for an asynchronous query to
// end.
#pragma once

#include <memory>

#include "front/com/SORRELLib.h"
#include "front/com/base/DispatchObject.h"
#include "front/com/session/ConnectionPoint.h"
#include "front/com/session/HiddenWindow.h"
#include "front/session/SorrelCOM.h"

namespace kestra::com {

class CSorrelObject final : public CDispatchObject<ISorrelCOM, IConnectionPointContainer,
                                                   IProvideClassInfo2, ISorrelDiagnosis>,
                            private CQueryDoneReceiver {
 public:
  CSorrelObject();
  ~CSorrelObject() override;

  STDMETHODIMP get_DiagRoot(VARIANT* pVal) noexcept override;
  STDMETHODIMP RunQuery(BSTR bstrQuery, long lTimeOut) noexcept override;
  STDMETHODIMP ReInitDiagRoot() noexcept override;
  STDMETHODIMP SetPluginsDir(BSTR bstrPluginsDir) noexcept override;
  STDMETHODIMP ClearPlugins() noexcept override;
  STDMETHODIMP CheckQuerySyntax(BSTR bstrQuery, long* pVal) noexcept override;
  STDMETHODIMP CancelQuery() noexcept override;
  STDMETHODIMP InitDiagModule(BSTR bstrModuleName, BSTR bstrModuleArgs,
                              long bInitAlways) noexcept override;
  STDMETHODIMP AllowActive(long bAllowActive) noexcept override;
  STDMETHODIMP RunQuerySync(BSTR bstrQuery, VARIANT varTerminationEvent, long lTimeOut,
                            VARIANT* pResult) noexcept override;
  STDMETHODIMP DisableAsyncMode() noexcept override;

  STDMETHODIMP Diagnose(BSTR bstrQuery, long* pbError, long* plLine, long* plColumn,
                        BSTR* pbstrSuggestions, BSTR* pbstrSentence) noexcept override;

  STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** ppEnum) noexcept override;
  STDMETHODIMP FindConnectionPoint(REFIID iid, IConnectionPoint** ppPoint) noexcept override;

  STDMETHODIMP GetClassInfo(ITypeInfo** ppInfo) noexcept override;
  STDMETHODIMP GetGUID(DWORD kind, GUID* pGuid) noexcept override;

 protected:
  void* Find(REFIID iid) noexcept override;

 private:
  void OnQueryDone() noexcept override;
  void FireQueryComplete(const QueryOutcome& outcome);

  CConnectionPoint m_events;
  std::unique_ptr<CSorrelCOM> m_pSession;
  CHiddenWindow m_window;
};

}  // namespace kestra::com
