/* plugin.h - what a library needs that Kestra loads: a plug-in, which adds modules to the query
 * language, or a library that the language calls by CALLDLL. examples/plugins/ holds two plug-ins
 * with a walk through them, examples/calldll/ a library for CALLDLL.
 *
 * Text is UTF-8 on Linux, and in the system's code page on Windows. There the byte strings are
 * OLE's, and plug-ins are DLLs whose version resource says "Diagnostic plugin" in its "Comments".
 *
 * The functions may be called from several threads at once, but for GetModuleNames and
 * GetModuleTypeInfo, which are called by one at a time. A library is never unloaded once one of its
 * modules was used, so a new build of it goes in place by a rename: writing into the file itself
 * pulls the ground from under every process that has it loaded. A process that has it loaded goes
 * on with the old one. When a query is cancelled, a call may go on by itself while nobody waits for
 * it any more. Loading, GetModuleNames and GetModuleTypeInfo are waited for without a limit, so
 * they are to be quick. No exception is to leave any of them.
 *
 * ---- A plug-in ----
 *
 * is a file "*.so" in the directory that the host names (kestra --plugins DIR). It carries the mark
 *
 *   KESTRA_PLUGIN("Diagnostic plugin, what it is about");
 *
 * once, at file level, and exports, marked KESTRA_EXPORT and in C++ extern "C":
 *
 *   BSTR GetModuleNames(void);
 *     The names of its modules, separated by commas. Called at the scan, after which the library is
 *     unloaded until one of its modules is needed. A name is one word of the query language. A
 *     module named as a built-in one replaces it; of two plug-ins with one name the file that was
 *     written later counts.
 *
 *   BSTR GetModuleTypeInfo(BSTR module);
 *     What the module's class declares; see below.
 *
 *   BSTR GetModule(BSTR module, BSTR arguments, int one, int keep, int alsoOne);
 *     The module's content; see below. arguments holds those that differ from their defaults:
 *     Limit=5,Place='north'. A quote inside a text is not doubled there. keep is 1 if anything in
 *     the class can be changed, added or deleted (actions alone do not count): the plug-in then
 *     keeps what it needs for that under a _ModuleId, until ClearModule. The two ones are always 1.
 *
 * and, as it likes:
 *
 *   void ClearModule(BSTR moduleId, int reserved);
 *     Forgets what was kept. Must be there if anything in the class can be changed.
 *
 *   BSTR Update(BSTR request, int reserved);
 *     Carries out one change; see below.
 *
 *   unsigned int GetPossibilities(unsigned int reserved);
 *     Kept, and not read further.
 *
 * Every text is a byte string. The arguments belong to the caller. A result is made by
 * SysAllocStringByteLen and released by the caller; null is a failure.
 *
 * ---- Its texts ----
 *
 * are trees of sections. "[name]" opens a section and "[]" closes it; "key = value" stands for one
 * value; lines are trimmed, empty lines and those that begin with ";" count for nothing. A value
 * may stand in double quotes, which keeps its blanks. A value cannot hold a line end.
 *
 * GetModuleTypeInfo gives the section of the module's class, and in it, each where there is one:
 *
 *   [Weather]
 *    [_Params]                  its properties, in their order
 *     [Place]
 *      Type = String            String, Dword, Enum, Bitmask, Version or Datime
 *      _CanBeChanged = 1        an UPDATE may set it
 *     []
 *     [Wind]
 *      Type = Enum
 *      [_Ops]                   the options of an Enum or Bitmask, the unit of a Dword
 *       0 = calm
 *       1 = strong
 *      []
 *     []
 *    []
 *    [_Args]                    the arguments of a module; likewise, and each with its default
 *     [Limit]
 *      Type = Dword
 *      Default = 0              for Dword, Enum and Bitmask a number other than -2
 *     []
 *    []
 *    [_Actions]                 for EXECUTE
 *     [Reset]
 *      [_Args]                  the action's arguments
 *      []
 *     []
 *    []
 *    [Station]                  any other section: a class of items below, with all of the above
 * and _CanBeAdded = 1           whether INSERT may make one _CanBeDeleted = 1         whether
 * DELETE may remove one
 *    []
 *   []
 *
 * GetModule gives the section of the module: a value for each property that is known (an Enum by
 * its number, a Bitmask by its bits, a Datime in seconds since 1970 UTC), and a section for each
 * item below it, named by its class. Besides, with an underscore: _ModuleId, and _IsInitialized = 0
 * when what is there is not whole, which fails the query. A value that the class does not declare,
 * or a section of no class, makes the whole answer void.
 *
 * Update gets, and gives back, sections without a name around them. In what it gets nothing stands
 * in quotes: a double quote belongs to the value. A value with a line end, or with blanks at its
 * ends, does not get here: the change fails.
 *
 *   _Op = Change                Add, Change, Delete or Action
 *   _Item = 7-0                 the _ModuleId; for an item below: "-" and its number among its
 *                               brothers from 0 on, for each level. Empty without a _ModuleId.
 *   _NewItemType = Station      with Add: the class of the new item
 *   _Action = Reset             with Action: its name
 *   [_Params]                   the values that were given, the arguments of an action
 *    Place = north
 *   []
 *   [_Ops]
 *    _Active = 1                changes are allowed; there is no call without it
 *    _Termination = 12          a handle that is signalled when the query is cancelled: a
 *                               descriptor that becomes readable; to be polled, never read or
 *                               closed. Good until Update returns. -1 for none
 *   []
 *
 * and the answer:
 *
 *   _Result = 1                 1 for success, anything else for failure
 *   [_Ops]
 *    _Result = 1                the same once more, and what the user reads:
 *    _Msg = 11006               the number of a message, with up to nine inserts
 *    _MsgArg1 = Place
 *    _MsgSrc = 140737488355328  the handle of the module that has the message's text, on Windows;
 *                               nothing for Kestra itself
 *    _SystemErr = 5             an error number of the Windows API; 0 or nothing for none
 *    _Restart = 1               the change works after a restart only
 *   []
 *
 * ---- A library for CALLDLL ----
 *
 * exports with C linkage the functions that are called:
 *
 *   BSTR Join(const char* strings, unsigned int reserved);
 *
 * - strings is a series of strings, each ended by a NUL, with one more NUL behind the last; for no
 *   arguments it is that one NUL. It is valid during the call only.
 * - reserved is 0.
 * - It returns a byte string, which the caller releases, or null for failure. CALLDLL takes the
 * text up to its first NUL. CALLDLLV takes a series of strings like the argument, within the
 * string's length.
 */
#ifndef KESTRA_PLUGIN_H
#define KESTRA_PLUGIN_H

#ifdef __cplusplus
extern "C" {
#endif

#ifdef _WIN32

/* Not together with the headers of OLE, which declare a BSTR of wide characters. Link oleaut32. */
#define KESTRA_EXPORT __declspec(dllexport)
#define KESTRA_IMPORT __declspec(dllimport)
#define KESTRA_CALL __stdcall

/* Nothing: the mark is the "Comments" string of the version resource. */
#define KESTRA_PLUGIN(comments) extern const char kestra_plugin_needs_a_version_resource[]

#else

#define KESTRA_EXPORT __attribute__((visibility("default")))
#define KESTRA_IMPORT KESTRA_EXPORT
#define KESTRA_CALL

/* Puts the plug-in's mark into its file, where it is read without loading it. */
#if defined(__has_attribute)
#if __has_attribute(retain)
#define KESTRA_RETAIN retain, /* also where sections that nobody refers to are thrown out */
#endif
#endif
#ifndef KESTRA_RETAIN
#define KESTRA_RETAIN
#endif
#define KESTRA_PLUGIN(comments)      \
  __attribute__((KESTRA_RETAIN used, \
                 section(".kestra.comments"))) static const char kestra_comments[] = comments

#endif

typedef char* BSTR;

/* A byte string of length bytes, copied from bytes (zeroed for null), with two NULs behind. Null
 * when there is no memory. These are found in the process that loads the library. */
KESTRA_IMPORT BSTR KESTRA_CALL SysAllocStringByteLen(const char* bytes, unsigned int length);
KESTRA_IMPORT unsigned int KESTRA_CALL SysStringByteLen(BSTR text);
KESTRA_IMPORT void KESTRA_CALL SysFreeString(BSTR text);

#ifdef __cplusplus
}
#endif

#endif
