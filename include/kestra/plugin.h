/* plugin.h - what a library needs that the query language calls by CALLDLL.
 *
 * The function that CALLDLL reaches is an export with C linkage:
 *
 *   BSTR Join(const char* strings, unsigned int reserved);
 *
 * - strings is a series of strings, each ended by a NUL, with one more NUL behind the last; for no
 *   arguments it is that one NUL. It is valid during the call only.
 * - reserved is 0.
 * - It returns a byte string that SysAllocStringByteLen made, which the caller releases, or null
 * for failure. CALLDLL takes the text up to its first NUL. CALLDLLV takes a series of strings like
 * the argument, within the string's length.
 * - It may be called from several threads at once.
 *
 * Text is UTF-8 on Linux, and in the system's code page on Windows. There these three functions are
 * OLE's, and this header is not needed.
 */
#ifndef KESTRA_PLUGIN_H
#define KESTRA_PLUGIN_H

#ifdef __cplusplus
extern "C" {
#endif

#define KESTRA_EXPORT __attribute__((visibility("default")))

typedef char* BSTR;

/* A byte string of length bytes, copied from bytes (zeroed for null), with two NULs behind. Null
 * when there is no memory. */
KESTRA_EXPORT BSTR SysAllocStringByteLen(const char* bytes, unsigned int length);
KESTRA_EXPORT unsigned int SysStringByteLen(BSTR text);
KESTRA_EXPORT void SysFreeString(BSTR text);

#ifdef __cplusplus
}
#endif

#endif
