/* A library for CALLDLL and CALLDLLV: what a host adds to the language without a module.
 *
 *   kestra "CALLDLL('libwords.so', 'Join', 'a', 'b')"          a-b
 *   kestra "CALLDLLV('libwords.so', 'Split', 'one two')"       one, two
 *
 * Build it as a shared library against kestra/plugin.h alone; what the header declares is found in
 * the process that loads it. */
#include <kestra/plugin.h>
#include <string.h>

/* All arguments, joined by a dash. */
KESTRA_EXPORT BSTR Join(const char* strings, unsigned int reserved) {
  char joined[1024];
  size_t used = 0;
  (void)reserved;
  for (; *strings; strings += strlen(strings) + 1) {
    const size_t length = strlen(strings);
    if (used + length + 1 > sizeof joined) return 0;
    if (used > 0) joined[used++] = '-';
    memcpy(joined + used, strings, length);
    used += length;
  }
  return SysAllocStringByteLen(joined, (unsigned int)used);
}

/* The words of the first argument, as a series of strings. */
KESTRA_EXPORT BSTR Split(const char* strings, unsigned int reserved) {
  const size_t length = strlen(strings);
  BSTR words = SysAllocStringByteLen(strings, (unsigned int)(length + 2));
  (void)reserved;
  if (!words) return 0;
  for (size_t i = 0; i < length; ++i) {
    if (words[i] == ' ') words[i] = '\0';
  }
  words[length] = words[length + 1] = '\0';
  return words;
}

/* What a callee can answer besides: nothing, an empty string, and bytes that do not fit. */
KESTRA_EXPORT BSTR Fail(const char* strings, unsigned int reserved) {
  (void)strings;
  (void)reserved;
  return 0;
}

KESTRA_EXPORT BSTR Empty(const char* strings, unsigned int reserved) {
  (void)strings;
  (void)reserved;
  return SysAllocStringByteLen("", 0);
}

KESTRA_EXPORT BSTR Unterminated(const char* strings, unsigned int reserved) {
  (void)strings;
  (void)reserved;
  return SysAllocStringByteLen("abc", 3);
}
