#include "model/plugins/Plugin.h"

#include "VLib/src/text/Text.h"
#include "VLib/src/threads/LeaveBehind.h"
#include "model/plugins/ClassDescription.h"

namespace kestra {
namespace {

// Held through loading and reading classes, and so across a call into the library.
std::recursive_mutex& PluginLock() {
  static auto* pLock = new std::recursive_mutex;  // never destroyed: threads may outlive statics
  return *pLock;
}

template <class Function>
void FindFunction(os::NativeLibrary library, const char* name, Function& pFunction) {
  pFunction = reinterpret_cast<Function>(os::FindExport(library, name));
}

// What a call into a library needs and leaves, owned by the call, which may outlive its caller.
struct TextCall {
  os::CByteString first;
  os::CByteString second;
  std::optional<std::string> answer;
};

}  // namespace

bool DiagPlugin::Load() {
  if (m_loadState.load(std::memory_order_acquire) == LoadState::NotTried) {
    std::lock_guard lock(PluginLock());
    if (m_loadState.load(std::memory_order_relaxed) == LoadState::NotTried) LoadNow();
  }
  return m_loadState.load(std::memory_order_acquire) == LoadState::Loaded;
}

void DiagPlugin::LoadNow() {
  m_loadState = LoadState::Failed;
  const os::NativeLibrary library = os::OpenLibrary(Path, os::LibraryUse::ForNow);
  FindFunction(library, "GetModuleTypeInfo", m_pGetModuleTypeInfo);
  FindFunction(library, "GetModule", m_pGetModule);
  if (!m_pGetModuleTypeInfo || !m_pGetModule) {
    os::CloseLibrary(library);
    return;
  }
  os::OpenLibrary(Path, os::LibraryUse::ForEver);
  uint32_t (*pGetPossibilities)(uint32_t) = nullptr;
  FindFunction(library, "GetPossibilities", pGetPossibilities);
  if (pGetPossibilities) m_possibilities = pGetPossibilities(0);
  FindFunction(library, "Update", m_pUpdate);
  FindFunction(library, "ClearModule", m_pClearModule);
  m_loadState.store(LoadState::Loaded, std::memory_order_release);
}

Ref<DiagClass> DiagPlugin::GetClass(std::string_view moduleName) {
  std::lock_guard lock(PluginLock());
  for (const auto& known : m_classes) {
    if (EqualsNoCase(known->Name, moduleName)) return known;
  }
  if (!Load()) return nullptr;
  const auto text =
      os::CByteString::Take(m_pGetModuleTypeInfo(os::CByteString(moduleName).get())).Text();
  CfgNode node;
  if (!text || !node.LoadText(*text, kCfgQuotes, CfgLayout::Cfg)) return nullptr;
  Ref<DiagClass> diagClass = ClassFromDescription(ModuleSection(node, moduleName));
  if (diagClass) m_classes.push_back(diagClass);
  return diagClass;
}

std::optional<std::string> DiagPlugin::GetModule(std::string_view moduleName, std::string_view args,
                                                 bool keep, const os::CWaitable* pTermination) {
  if (!Load()) return std::nullopt;
  auto call = std::make_shared<TextCall>();
  call->first = os::CByteString(moduleName);
  call->second = os::CByteString(args);
  const bool isDone = CallOrLeave(
      [self = Ref<DiagPlugin>(this), call, keep] {
        call->answer = os::CByteString::Take(
                           self->m_pGetModule(call->first.get(), call->second.get(), 1, keep, 1))
                           .Text();
      },
      pTermination);
  return isDone ? std::move(call->answer) : std::nullopt;
}

std::optional<std::string> DiagPlugin::Update(std::string_view request,
                                              const Ref<os::CEvent>& keptEvent,
                                              const os::CWaitable* pTermination) {
  if (!Load() || !m_pUpdate) return std::nullopt;
  auto call = std::make_shared<TextCall>();
  call->first = os::CByteString(request);
  const bool isDone = CallOrLeave(
      [self = Ref<DiagPlugin>(this), call, keptEvent] {
        call->answer = os::CByteString::Take(self->m_pUpdate(call->first.get(), 0)).Text();
      },
      pTermination);
  return isDone ? std::move(call->answer) : std::nullopt;
}

void DiagPlugin::ClearModule(const std::string& moduleId) {
  if (CanClear()) m_pClearModule(os::CByteString(moduleId).get(), 0);
}

const DiagPluginMap::Entry* DiagPluginMap::Find(std::string_view name) const {
  for (const Entry& entry : m_entries) {
    if (EqualsNoCase(entry.name, name)) return &entry;
  }
  return nullptr;
}

}  // namespace kestra
