/* Plug-ins that do not keep to the contract, each in its own way. Built once for each FAULT_... */
#include <kestra/plugin.h>
#include <string.h>
#include <unistd.h>

#ifndef FAULT_MARK
KESTRA_PLUGIN("A Diagnostic Plugin of the tests");
#endif

static BSTR Text(const char* text) {
  return SysAllocStringByteLen(text, (unsigned int)strlen(text));
}

#if defined FAULT_NAMES_LITERAL
KESTRA_EXPORT BSTR GetModuleNames(void) {
  return (BSTR) "Faulty";
}
#elif defined FAULT_NAMES_NULL
KESTRA_EXPORT BSTR GetModuleNames(void) {
  return 0;
}
#elif !defined FAULT_NO_NAMES
KESTRA_EXPORT BSTR GetModuleNames(void) {
  return Text(", Faulty ,,");
}
#endif

KESTRA_EXPORT BSTR GetModuleTypeInfo(BSTR module) {
  (void)module;
#if defined FAULT_TYPE_NULL
  return 0;
#elif defined FAULT_TYPE_ARGUMENT
  return module;
#elif defined FAULT_TYPE_NOISE
  static const char noise[] = "\xff\xfe\0[[[=]\n[Faulty\n[_Params]\n[x]\nType=Colour";
  return SysAllocStringByteLen(noise, sizeof noise - 1);
#elif defined FAULT_TYPE_HALF
  return Text("[Faulty]\n[_Args]\n[Limit]\nType=Dword\n");
#elif defined FAULT_NO_CLEAR
  return Text("[Faulty]\n[_Params]\n[Text]\nType=String\n_CanBeChanged=1\n[]\n[]\n[]\n");
#else
  return Text(
      "[Faulty]\n[_Params]\n[Text]\nType=String\n[]\n[]\n[Row]\n[_Params]\n[Number]\nType=Dword\n"
      "[]\n[]\n[]\n[]\n");
#endif
}

#ifndef FAULT_NO_GETMODULE
KESTRA_EXPORT BSTR GetModule(BSTR module, BSTR arguments, int one, int keep, int alsoOne) {
  (void)module, (void)arguments, (void)one, (void)keep, (void)alsoOne;
#if defined FAULT_CONTENT_NULL
  return 0;
#elif defined FAULT_CONTENT_ARGUMENT
  return arguments;
#elif defined FAULT_CONTENT_LITERAL
  return (BSTR) "[Faulty]\nText = literal\n";
#elif defined FAULT_CONTENT_NOISE
  return SysAllocStringByteLen("\x01\x02=\xff\0\0[", 7);
#elif defined FAULT_CONTENT_UNKNOWN
  return Text("[Faulty]\nText=a\nColour=3\n[]\n");
#elif defined FAULT_CONTENT_HALF
  return Text("[Faulty]\nText=a\n[Row]\nNumber=1\n[]\n[Ro");
#elif defined FAULT_CONTENT_DEEP
  static char text[300000];
  char* end = text;
  for (int i = 0; i < 50000; ++i) memcpy(end, "[Row]\n", 6), end += 6;
  return SysAllocStringByteLen(text, 300000);
#elif defined FAULT_CONTENT_NOT_WHOLE
  return Text("[Faulty]\nText=a\n_IsInitialized=0\n[]\n");
#elif defined FAULT_SLEEPS
  for (int i = 0; i < 50; ++i) usleep(100000);
  return Text("[Faulty]\nText=late\n[]\n");
#else
  return Text("[Faulty]\nText=good\n[Row]\nNumber=4294967295\n[]\n[Row]\nNumber=-1\n[]\n[]\n");
#endif
}
#endif
