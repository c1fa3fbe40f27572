// The content of a module, as a plug-in or a cache entry gives it.
#include <cstdint>
#include <string>
#include <string_view>

#include "fuzz/support/Require.h"
#include "model/dump/Dump.h"
#include "model/plugins/ClassDescription.h"
#include "model/stored/StoredItem.h"

namespace {

using namespace kestra;

Ref<DiagClass> MakeClass() {
  CfgNode node("M");
  const char* const text =
      "[_Params]\n[S]\nType=String\n[]\n[D]\nType=Dword\n[]\n[E]\nType=Enum\n[_Ops]\n0=a\n1=b\n[]"
      "\n[]\n"
      "[B]\nType=Bitmask\n[_Ops]\n0=x\n1=y\n[]\n[]\n[T]\nType=Datime\n[]\n[V]\nType=Version\n[]\n[]"
      "\n"
      "[C]\n[_Params]\n[S]\nType=String\n[]\n[]\n[]\n";
  node.LoadText(text, 0, CfgLayout::Cfg);
  return ClassFromDescription(node);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto* pClass = new Ref<DiagClass>(MakeClass());
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  CfgNode node;
  QueryMessage message;
  if (!node.LoadText(text, kCfgQuotes, CfgLayout::Cfg)) return 0;
  const auto item = MakeRef<StoredItem>(*pClass, 0);
  const bool isWhole = LoadFromNode(*item, ModuleSection(node, "M"), 0, message);
  fuzz::Require(isWhole == item->IsInitialized);
  for (int format = 0; format < 5; ++format) {
    std::string dump;
    Dump(*item, dump, message, static_cast<DumpFormat>(format));
  }
  return 0;
}
