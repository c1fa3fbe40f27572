#include "platform/image/registry/hive/HivexLibrary.h"

#include "platform/os/Library.h"

namespace kestra::image {
namespace {

template <class Function>
bool Find(os::NativeLibrary library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(os::FindExport(library, name));
  return function != nullptr;
}

bool Load(HivexLibrary& hivex) {
  const os::NativeLibrary library = os::OpenLibrary("libhivex.so.0");
  return Find(library, "hivex_open", hivex.open) && Find(library, "hivex_close", hivex.close) &&
         Find(library, "hivex_root", hivex.root) &&
         Find(library, "hivex_node_children", hivex.nodeChildren) &&
         Find(library, "hivex_node_values", hivex.nodeValues) &&
         Find(library, "hivex_value_value", hivex.valueValue);
}

}  // namespace

const HivexLibrary* LoadHivex() {
  static HivexLibrary hivex;
  static const bool isLoaded = Load(hivex);
  return isLoaded ? &hivex : nullptr;
}

}  // namespace kestra::image
