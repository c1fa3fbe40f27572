// The bytes of a registry value, of whatever type it says it is: the first byte.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "Modules/ModuleTable.h"
#include "Modules/Registry/RegistryValueText.h"
#include "fuzz/support/Require.h"
#include "model/classes/Class.h"

namespace {

using namespace kestra;

Ref<DiagClass> ValueClass() {
  for (const ModuleRow& row : BuiltInModules()) {
    if (std::string_view(row.pClass->name) != "Registry") continue;
    return Ref<DiagClass>(FindClass(row.pClass->Get().get(), "RegistryValue"));
  }
  abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const auto* pClass = new Ref<DiagClass>(ValueClass());
  if (size < 2) return 0;
  const std::string separator(1, static_cast<char>(data[1]));
  const std::string bytes(reinterpret_cast<const char*>(data) + 2, size - 2);
  DiagParams params((*pClass)->Params);
  SetValueProperties(params, data[0] % 13, bytes, separator);
  for (size_t i = 0; i < params.Count(); ++i) {
    // A byte becomes two digits and a blank; a wide character at most three bytes.
    fuzz::Require(params.Get(i)->GetText().size() <= 3 * bytes.size() + 10);
  }
  return 0;
}
