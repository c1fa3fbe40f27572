// What decoders of binary files read from: bytes at offsets, so that a large file costs a few short
// reads; and numbers out of bytes, with every limit checked.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/base/SystemError.h"

namespace kestra {

// One thread at a time.
class CByteSource {
 public:
  virtual ~CByteSource() = default;
  // Puts the bytes from offset on into bytes, at most length of them: fewer, with success, only
  // where the source ends. An error means that they could not be read.
  virtual SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) = 0;
};

// A source in memory. Does not own its bytes.
class CMemorySource final : public CByteSource {
 public:
  explicit CMemorySource(std::string_view content) : m_content(content) {}
  SystemError ReadAt(uint64_t offset, size_t length, std::string& bytes) override {
    const auto begin = static_cast<size_t>(std::min<uint64_t>(offset, m_content.size()));
    bytes.assign(m_content.substr(begin, length));
    return kErrorSuccess;
  }

 private:
  std::string_view m_content;
};

enum class ByteOrder { Little, Big };

// The unsigned number of width bytes (at most 8) at offset into value; false, and value as it was,
// if it does not lie wholly within bytes.
inline bool LoadNumber(std::string_view bytes, uint64_t offset, size_t width, ByteOrder order,
                       uint64_t& value) {
  if (offset > bytes.size() || bytes.size() - offset < width) return false;
  uint64_t number = 0;
  for (size_t i = 0; i < width; ++i) {
    const size_t place = order == ByteOrder::Big ? i : width - 1 - i;
    number = number << 8 | static_cast<uint8_t>(bytes[static_cast<size_t>(offset) + place]);
  }
  value = number;
  return true;
}

// The little-endian number of T's width.
template <typename T>
bool LoadLittle(std::string_view bytes, uint64_t offset, T& value) {
  uint64_t number = 0;
  if (!LoadNumber(bytes, offset, sizeof(T), ByteOrder::Little, number)) return false;
  value = static_cast<T>(number);
  return true;
}

}  // namespace kestra
