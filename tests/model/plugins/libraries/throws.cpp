// Plug-ins that let an exception of their own out.
#include <kestra/plugin.h>

#include <cstring>

KESTRA_PLUGIN("Diagnostic plugin of the tests");

namespace {

struct COwnError {
  virtual ~COwnError() = default;
};

BSTR Text(const char* text) {
  return SysAllocStringByteLen(text, static_cast<unsigned int>(std::strlen(text)));
}

}  // namespace

extern "C" {

KESTRA_EXPORT BSTR GetModuleNames() {
#ifdef THROWS_AT_NAMES
  throw COwnError();
#endif
  return Text("Faulty");
}

KESTRA_EXPORT BSTR GetModuleTypeInfo(BSTR) {
#ifdef THROWS_AT_TYPE
  throw COwnError();
#endif
  return Text("[Faulty]\n[]\n");
}

KESTRA_EXPORT BSTR GetModule(BSTR, BSTR, int, int, int) {
  throw COwnError();
}
}
