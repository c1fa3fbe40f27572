// A data file, with its layers. The first bytes say how it is loaded.
#include <cstdint>
#include <string>

#include "VLib/src/data/CfgNode.h"
#include "fuzz/support/Require.h"

namespace {

using kestra::CfgLayout;
using kestra::CfgMode;
using kestra::CfgNode;

// What was read from text can be held by it, and comes back the same.
void DumpAndLoadAgain(const CfgNode& node, uint32_t quoteFlags, CfgLayout layout) {
  std::string text;
  node.Dump(text, 0, quoteFlags, layout);
  CfgNode again;
  kestra::fuzz::Require(again.LoadText(text, quoteFlags, layout));
  std::string twice;
  again.Dump(twice, 0, quoteFlags, layout);
  kestra::fuzz::Require(node.ReadsBack(quoteFlags, layout) && twice == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 3) return 0;
  const CfgLayout layout = data[0] & 1 ? CfgLayout::Ini : CfgLayout::Cfg;
  const CfgMode mode = data[0] & 2 ? CfgMode::OwnKeys : CfgMode::All;
  const uint32_t quoteFlags = data[0] & 4 ? kestra::kCfgQuotes : 0;
  const char* const paths[] = {"", "A", "A\\B", "\\a\\\\b\\"};
  const std::string bytes(reinterpret_cast<const char*>(data + 2), size - 2);
  CfgNode file;
  file.LoadBytes(bytes, paths[data[0] >> 3 & 3], mode, data[1], layout);
  DumpAndLoadAgain(file, quoteFlags, layout);
  CfgNode text;
  if (text.LoadText(bytes, quoteFlags, layout)) DumpAndLoadAgain(text, quoteFlags, layout);
  return 0;
}
