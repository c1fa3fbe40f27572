// The description of a class, as a plug-in gives it.
#include <cstdint>
#include <string>
#include <string_view>

#include "model/dump/Dump.h"
#include "model/plugins/ClassDescription.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  kestra::CfgNode node;
  if (!node.LoadText(text, kestra::kCfgQuotes, kestra::CfgLayout::Cfg)) return 0;
  const auto diagClass = kestra::ClassFromDescription(kestra::ModuleSection(node, "M"));
  if (!diagClass) return 0;
  std::string dump;
  kestra::DumpType(*diagClass, dump);
  kestra::HasActiveContent(*diagClass);
  kestra::FindClass(diagClass.get(), "no such class");
  return 0;
}
