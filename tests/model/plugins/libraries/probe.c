/* A plug-in that tells what it was called with. Its module's one item shows the calls. */
#include <kestra/plugin.h>
#include <stdio.h>
#include <string.h>

KESTRA_PLUGIN("DIAGNOSTIC PLUGIN for tests");

#ifndef PROBE_NAME
#define PROBE_NAME "Probe"
#endif
#ifndef PROBE_MODULES
#define PROBE_MODULES PROBE_NAME
#endif

static char g_calls[4000];

static BSTR Text(const char* text) {
  return SysAllocStringByteLen(text, (unsigned int)strlen(text));
}

static void Note(const char* call, const char* text) {
  const size_t used = strlen(g_calls);
  snprintf(g_calls + used, sizeof g_calls - used, "%s(%s) ", call, text);
}

KESTRA_EXPORT BSTR GetModuleNames(void) {
  return Text(PROBE_MODULES);
}

KESTRA_EXPORT BSTR GetModuleTypeInfo(BSTR module) {
  char text[1000];
  snprintf(
      text, sizeof text,
      "[%s]\n_CanBeAdded=1\n"
      "[_Args]\n[Limit]\nType=Dword\nDefault=7\n[]\n[Place]\nType=String\nDefault=\"\"\n[]\n[]\n"
      "[_Params]\n[Calls]\nType=String\n[]\n[Origin]\nType=String\n[]\n[]\n"
      "[_Actions]\n[Reset]\n[_Args]\n[Hard]\nType=Enum\nDefault=1\n[_Ops]\n0=no\n1=yes\n[]\n[]\n"
      "[]\n[]\n[]\n"
      "[Leaf]\n_CanBeAdded=1\n_CanBeDeleted=1\n[_Params]\n[Label]\nType=String\n"
      "_CanBeChanged=1\n[]\n[Weight]\nType=Dword\n_CanBeChanged=1\n[_Ops]\n0=kg\n[]\n[]\n"
      "[Release]\nType=version\n[]\n[]\n[]\n[]\n",
      module);
  return Text(text);
}

KESTRA_EXPORT BSTR GetModule(BSTR module, BSTR arguments, int one, int keep, int alsoOne) {
  char text[6000];
  char call[200];
  snprintf(call, sizeof call, "%s,%s,%d,%d,%d", module, arguments, one, keep, alsoOne);
  Note("GetModule", call);
  /* No head line: that form is read too. */
  snprintf(text, sizeof text,
           "_ModuleId=M1\nCalls = \"%s\"\nOrigin = %s\n"
           "[Leaf]\nLabel = \" kept \"\nWeight = 4000000000\nRelease = 1.2.3\n"
           "[Leaf]\nLabel = inner\n[]\n[]\n[Leaf]\nLabel = second\n[]\n",
           g_calls, PROBE_NAME);
  return Text(text);
}

KESTRA_EXPORT void ClearModule(BSTR id, int reserved) {
  (void)reserved;
  Note("ClearModule", id);
}

KESTRA_EXPORT BSTR Update(BSTR request, int reserved) {
  char flat[1000];
  size_t used = 0;
  (void)reserved;
  /* On one line, and without the number that differs from run to run. */
  for (const char* c = request; *c && used + 1 < sizeof flat; ++c) {
    if (strncmp(c, "_Termination", 12) == 0) {
      c += strcspn(c, "\n");
      continue;
    }
    if (*c == '\r' || (*c == ' ' && (used == 0 || flat[used - 1] == ';'))) continue;
    flat[used++] = *c == '\n' ? ';' : *c;
  }
  flat[used] = '\0';
  Note("Update", flat);
  if (strstr(request, "fail")) {
    return Text(
        "_Result=0\n[_Ops]\n_Result=0\n_Msg=11006\n_MsgArg1=Label\n_MsgArg2=is good\n"
        "_MsgSrc=4294967297\n_SystemErr=5\n_Restart=1\n[]\n");
  }
  if (strstr(request, "silent")) return Text("_Result=1\n");
  if (strstr(request, "nothing")) return 0;
  return Text("_Result=1\n[_Ops]\n_Result=1\n[]\n");
}
