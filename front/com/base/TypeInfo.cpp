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

// Never destroyed: at the end of a process that still holds objects it is too late to release what
// belongs to other libraries.
struct KnownInfos {
  std::mutex lock;               // guards the list
  std::vector<KnownInfo> infos;  // a dozen at most
};
KnownInfos& Known() {
  static auto* const pKnown = new KnownInfos;
  return *pKnown;
}

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
    std::lock_guard lock(Known().lock);
    for (const KnownInfo& known : Known().infos) {
      if (!IsEqualGUID(known.id, id)) continue;
      info = known.info;
      return S_OK;
    }
    CComPtr<ITypeInfo> loaded;
    if (const HRESULT result = Load(id, loaded); FAILED(result)) return result;
    Known().infos.push_back({id, loaded});
    info = std::move(loaded);
    return S_OK;
  });
}

void ForgetTypeInfos() noexcept {
  std::vector<KnownInfo> known;
  std::lock_guard lock(Known().lock);
  known.swap(Known().infos);
}

}  // namespace kestra::com
