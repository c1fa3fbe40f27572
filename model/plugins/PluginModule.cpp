#include "model/plugins/PluginModule.h"

#include "model/plugins/ClassDescription.h"
#include "model/stored/StoredItem.h"

namespace kestra {

PluginModule::~PluginModule() {
  Forget();
}

void PluginModule::Forget() noexcept {
  if (Id().empty()) return;
  try {
    Plugin()->ClearModule(Id());
    SetId({});
  } catch (...) {
    // A plug-in that throws here, or no memory for the call: what it keeps stays with it.
  }
}

bool PluginModule::Init(bool, QueryMessage& message) {
  DropContent();
  IsInitialized = false;
  Forget();
  if (Fill(message)) return true;
  DropContent();
  return IsInitialized = false;
}

bool PluginModule::Fill(QueryMessage& message) {
  if (!HasArgs()) return false;
  // What can be changed must be kept by the plug-in, which must then be able to let go of it.
  const bool keep = HasActiveContent(*GetTypeInfo());
  if (keep && !Plugin()->CanClear()) return false;
  const auto text =
      Plugin()->GetModule(GetName(), FormatArgs("", ","), keep, message.TerminationEvent());
  CfgNode answer;
  if (!text || !answer.LoadText(*text, kCfgQuotes, CfgLayout::Cfg)) return false;
  const CfgNode& content = ModuleSection(answer, GetName());
  SetId(content.GetText("_ModuleId"));
  const auto makeItem = [](CVDiagItem& parent, Ref<DiagClass> diagClass, size_t number) {
    const auto& target = dynamic_cast<CPluginTarget&>(parent);  // all items here are targets
    return Ref<CVDiagItem>(
        MakeRef<PluginItem>(std::move(diagClass), target.Plugin(), target.ChildId(number)));
  };
  return LoadFromNode(*this, content, makeItem, message);
}

// The plug-in knows nothing of content that came from the cache.
bool PluginModule::HasPluginsContent(QueryMessage& message) {
  if (!FromCache) return true;
  FromCache = false;
  return Init(true, message);
}

}  // namespace kestra
