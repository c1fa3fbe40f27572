#include "model/plugins/Plugin.h"

#include <map>
#include <memory>

#include "VLib/src/text/Text.h"
#include "VLib/src/threads/LeaveBehind.h"
#include "model/plugins/ClassDescription.h"

namespace kestra {
namespace {

template <class Function>
void FindFunction(os::NativeLibrary library, const char* name, Function& pFunction) {
  pFunction = reinterpret_cast<Function>(os::FindExport(library, name));
}

// What a call into a library needs and leaves, owned by the call, which may outlive its caller.
struct TextCall {
  os::CByteString first;
  os::CByteString second;
  std::optional<std::string> answer;
  std::atomic<bool> isOver{false};  // set by whoever ends first: the call, or who waits for it

  // An answer that is one of the arguments stays the caller's.
  void Keep(os::ByteString text) {
    if (text && text == first.get()) {
      answer = first.Text();
    } else if (text && text == second.get()) {
      answer = second.Text();
    } else {
      answer = os::CByteString::Take(text).Text();
    }
  }
};

// The code that is mapped for a path is that of its first load in this process: the loader knows a
// library by its path and never gives it up.
std::string RememberCode(const std::string& path, const std::string& code) {
  static auto* pKnown = new std::map<std::string, std::string>;  // under the plug-in lock
  return pKnown->try_emplace(path, code).first->second;
}

std::string ModuleIdIn(const std::string& text, std::string_view moduleName) {
  CfgNode node;
  if (!node.LoadText(text, kCfgQuotes, CfgLayout::Cfg)) return {};
  return ModuleSection(node, moduleName).GetText("_ModuleId");
}

}  // namespace

std::recursive_mutex& PluginLock() {
  static auto* pLock = new std::recursive_mutex;  // never destroyed: threads may outlive statics
  return *pLock;
}

bool DiagPlugin::Load() {
  if (m_loadState.load(std::memory_order_acquire) == LoadState::NotTried) {
    std::lock_guard lock(PluginLock());
    if (m_loadState.load(std::memory_order_relaxed) == LoadState::NotTried) LoadNow();
  }
  return m_loadState.load(std::memory_order_acquire) == LoadState::Loaded;
}

void DiagPlugin::LoadNow() {
  m_loadState = LoadState::Failed;
  const std::string codeBefore = DescribeCodeFile(Path);
  const os::NativeLibrary library = os::OpenLibrary(Path, os::LibraryUse::ForNow);
  FindFunction(library, "GetModuleTypeInfo", m_pGetModuleTypeInfo);
  FindFunction(library, "GetModule", m_pGetModule);
  if (!m_pGetModuleTypeInfo || !m_pGetModule) {
    os::CloseLibrary(library);
    return;
  }
  os::OpenLibrary(Path, os::LibraryUse::ForEver);
  // A file that was replaced while it was being loaded is of no known version.
  const bool isSame = DescribeCodeFile(Path) == codeBefore;
  m_code = RememberCode(Path, isSame ? codeBefore : std::string());
  uint32_t (*pGetPossibilities)(uint32_t) = nullptr;
  FindFunction(library, "GetPossibilities", pGetPossibilities);
  if (pGetPossibilities) m_possibilities = pGetPossibilities(0);
  FindFunction(library, "Update", m_pUpdate);
  FindFunction(library, "ClearModule", m_pClearModule);
  m_loadState.store(LoadState::Loaded, std::memory_order_release);
}

std::string DiagPlugin::Code() {
  return Load() ? m_code : std::string();
}

Ref<DiagClass> DiagPlugin::FindKnownClass(std::string_view moduleName) {
  std::lock_guard lock(m_classesLock);
  for (const auto& known : m_classes) {
    if (EqualsNoCase(known->Name, moduleName)) return known;
  }
  return nullptr;
}

// What a plug-in throws ends here: it describes no class then.
Ref<DiagClass> DiagPlugin::ReadClass(std::string_view moduleName) {
  TextCall call;
  call.first = os::CByteString(moduleName);
  try {
    call.Keep(m_pGetModuleTypeInfo(call.first.get()));
  } catch (...) {
    return nullptr;
  }
  CfgNode node;
  if (!call.answer || !node.LoadText(*call.answer, kCfgQuotes, CfgLayout::Cfg)) return nullptr;
  return ClassFromDescription(ModuleSection(node, moduleName));
}

Ref<DiagClass> DiagPlugin::GetClass(std::string_view moduleName) {
  if (Ref<DiagClass> known = FindKnownClass(moduleName)) return known;
  std::lock_guard pluginLock(PluginLock());
  if (Ref<DiagClass> known = FindKnownClass(moduleName)) return known;
  if (!Load()) return nullptr;
  Ref<DiagClass> diagClass = ReadClass(moduleName);
  if (!diagClass) return nullptr;
  std::lock_guard lock(m_classesLock);
  m_classes.push_back(diagClass);
  return diagClass;
}

std::optional<std::string> DiagPlugin::GetModule(std::string_view moduleName, std::string_view args,
                                                 bool keep, const os::CWaitable* pTermination) {
  if (!Load()) return std::nullopt;
  auto call = std::make_shared<TextCall>();
  call->first = os::CByteString(moduleName);
  call->second = os::CByteString(args);
  const bool isDone = CallOrLeave(
      [self = Ref<DiagPlugin>(this), call, keep, name = std::string(moduleName)] {
        call->Keep(self->m_pGetModule(call->first.get(), call->second.get(), 1, keep, 1));
        // Nobody waits any more: what the plug-in keeps for the answer has no use.
        if (!call->isOver.exchange(true)) return;
        const std::string id = call->answer ? ModuleIdIn(*call->answer, name) : std::string();
        if (!id.empty()) self->ClearModule(id);
      },
      pTermination);
  if (isDone) return std::move(call->answer);
  if (!call->isOver.exchange(true)) return std::nullopt;
  // It has ended at the last moment, so the answer is whole and this thread's.
  const std::string id = call->answer ? ModuleIdIn(*call->answer, moduleName) : std::string();
  if (!id.empty()) ClearModule(id);
  return std::nullopt;
}

std::optional<std::string> DiagPlugin::Update(std::string_view request,
                                              const Ref<os::CKeptEvent>& keptEvent,
                                              const os::CWaitable* pTermination) {
  if (!Load() || !m_pUpdate) return std::nullopt;
  auto call = std::make_shared<TextCall>();
  call->first = os::CByteString(request);
  const bool isDone =
      CallOrLeave([self = Ref<DiagPlugin>(this), call,
                   keptEvent] { call->Keep(self->m_pUpdate(call->first.get(), 0)); },
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
