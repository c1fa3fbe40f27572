#include "front/com/base/TypeInfo.h"

#include <mutex>
#include <vector>

#include "front/com/base/Barrier.h"
#include "platform/os/HostEnvironment.h"
#include "platform/win32/base/Wide.h"

namespace kestra::com {
namespace {

struct KnownInfo {
  GUID id;
  CComPtr<ITypeInfo> info;
};

std::mutex g_lock;               // guards the list
std::vector<KnownInfo> g_known;  // a dozen at most

HRESULT Load(REFGUID id, CComPtr<ITypeInfo>& info) {
  CComPtr<ITypeLib> library;
  const HRESULT result = LoadOwnTypeLibrary(library);
  return FAILED(result) ? result : library->GetTypeInfoOfGuid(id, info.Place());
}

}  // namespace

std::wstring ModulePath() {
  return Wide(os::LibraryPath());
}

HRESULT LoadOwnTypeLibrary(CComPtr<ITypeLib>& library) {
  return LoadTypeLibEx(ModulePath().c_str(), REGKIND_NONE, library.Place());
}

HRESULT TypeInfoOf(REFGUID id, CComPtr<ITypeInfo>& info) noexcept {
  return ComBarrier()([&]() -> HRESULT {
    std::lock_guard lock(g_lock);
    for (const KnownInfo& known : g_known) {
      if (!IsEqualGUID(known.id, id)) continue;
      info = known.info;
      return S_OK;
    }
    CComPtr<ITypeInfo> loaded;
    if (const HRESULT result = Load(id, loaded); FAILED(result)) return result;
    g_known.push_back({id, loaded});
    info = std::move(loaded);
    return S_OK;
  });
}

void ForgetTypeInfos() noexcept {
  std::vector<KnownInfo> known;
  std::lock_guard lock(g_lock);
  known.swap(g_known);
}

}  // namespace kestra::com
