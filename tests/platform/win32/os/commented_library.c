/* A library with a version resource, strings, and functions that tell which bytes they get. */
/* The first one is needed by the next. */
/* clang-format off */
#include <windows.h>
#include <oleauto.h>
/* clang-format on */
#include <string.h>

/* The bytes up to two NULs in hexadecimal digits, as CALLDLL hands them over. */
__declspec(dllexport) BSTR HexOfBlock(const char* block, int reserved) {
  static const char digits[] = "0123456789abcdef";
  char text[256];
  UINT length = 0;
  (void)reserved;
  for (; (block[0] != 0 || block[1] != 0) && length < sizeof text - 2; ++block) {
    text[length++] = digits[((unsigned char)*block) >> 4];
    text[length++] = digits[((unsigned char)*block) & 15];
  }
  return SysAllocStringByteLen(text, length);
}

/* The byte string itself, as a new one. */
__declspec(dllexport) BSTR Copy(BSTR text) {
  return SysAllocStringByteLen((const char*)text, SysStringByteLen(text));
}

/* How many bytes a string has, by its own count. */
__declspec(dllexport) int CountBytes(BSTR text) {
  return (int)SysStringByteLen(text);
}
