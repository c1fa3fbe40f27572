#include "platform/base/text/Utf16.h"

#include <cstdint>

#include "platform/base/ByteSource.h"

namespace kestra {
namespace {

bool IsHighSurrogate(uint32_t unit) {
  return unit >= 0xD800 && unit < 0xDC00;
}
bool IsLowSurrogate(uint32_t unit) {
  return unit >= 0xDC00 && unit < 0xE000;
}

void AppendUtf8(std::string& text, uint32_t character) {
  const auto append = [&](uint32_t byte) { text += static_cast<char>(byte); };
  const auto appendRest = [&](uint32_t shift) { append(0x80 | (character >> shift & 0x3F)); };
  if (character < 0x80) {
    append(character);
  } else if (character < 0x800) {
    append(0xC0 | character >> 6);
    appendRest(0);
  } else if (character < 0x10000) {
    append(0xE0 | character >> 12);
    appendRest(6);
    appendRest(0);
  } else {
    append(0xF0 | character >> 18);
    appendRest(12);
    appendRest(6);
    appendRest(0);
  }
}

}  // namespace

std::string Utf8FromUtf16(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() / 2);
  uint16_t unit = 0;
  for (size_t at = 0; LoadLittle(bytes, at, unit); at += 2) {
    uint16_t next = 0;
    if (IsHighSurrogate(unit) && LoadLittle(bytes, at + 2, next) && IsLowSurrogate(next)) {
      AppendUtf8(text, 0x10000 + ((unit - 0xD800u) << 10) + (next - 0xDC00u));
      at += 2;
    } else {
      AppendUtf8(text, unit);
    }
  }
  return text;
}

}  // namespace kestra
