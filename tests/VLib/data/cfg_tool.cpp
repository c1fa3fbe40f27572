// Reads a data file and writes it again, for tests that compare with other programs:
//
//   cfg_tool FROM cfg|ini KEY TO cfg|ini KEY COMPRESS
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "VLib/src/data/CfgNode.h"
#include "platform/machine/Machine.h"

namespace {

kestra::CfgLayout LayoutOf(std::string_view name) {
  return name == "ini" ? kestra::CfgLayout::Ini : kestra::CfgLayout::Cfg;
}

uint32_t KeyOf(const char* text) {
  return static_cast<uint32_t>(strtoul(text, nullptr, 10));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 8) return 2;
  kestra::CFileSystem& files = *kestra::LiveMachine()->Files();
  kestra::CfgNode tree;
  if (!tree.LoadFile(files, arguments[1], "", kestra::CfgMode::All, KeyOf(arguments[3]),
                     LayoutOf(arguments[2]))) {
    fprintf(stderr, "cannot read %s\n", arguments[1]);
    return 1;
  }
  const bool compress = std::string_view(arguments[7]) == "1";
  if (tree.SaveFile(files, arguments[4], KeyOf(arguments[6]), compress, LayoutOf(arguments[5])))
    return 0;
  fprintf(stderr, "cannot write %s\n", arguments[4]);
  return 1;
}
