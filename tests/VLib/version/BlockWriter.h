// Writes version blocks for tests, right ones and wrong ones.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace kestra::test {

enum class NodeType : uint16_t { Binary = 0, Text = 1 };

inline void AddNumber(std::string& bytes, uint64_t number, size_t width) {
  for (size_t i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i));
}

inline std::string Utf16(std::u16string_view text) {
  std::string bytes;
  for (const char16_t unit : text) AddNumber(bytes, unit, 2);
  return bytes;
}

inline void PadToFour(std::string& bytes) {
  while (bytes.size() % 4 != 0) bytes += '\0';
}

// A node with its children; its place in the block must be a multiple of 4.
inline std::string Node(std::string_view key, NodeType type, const std::string& value,
                        size_t valueLength, const std::vector<std::string>& children) {
  std::string bytes(2, '\0');
  AddNumber(bytes, valueLength, 2);
  AddNumber(bytes, static_cast<uint16_t>(type), 2);
  for (const char c : key) AddNumber(bytes, static_cast<uint8_t>(c), 2);
  AddNumber(bytes, 0, 2);
  PadToFour(bytes);
  bytes += value;
  for (const std::string& child : children) {
    PadToFour(bytes);
    bytes += child;
  }
  bytes[0] = static_cast<char>(bytes.size() & 0xFF);
  bytes[1] = static_cast<char>(bytes.size() >> 8);
  return bytes;
}

inline std::string TextNode(std::string_view key, std::u16string_view text) {
  std::string value = Utf16(text);
  AddNumber(value, 0, 2);
  return Node(key, NodeType::Text, value, static_cast<uint16_t>(value.size() / 2), {});
}

// VS_FIXEDFILEINFO of two versions.
inline std::string Fixed(const uint16_t (&file)[4], const uint16_t (&product)[4]) {
  std::string bytes;
  AddNumber(bytes, 0xFEEF04BD, 4);
  AddNumber(bytes, 0x10000, 4);
  for (const auto* parts : {file, product}) {
    for (const size_t i : {1, 0, 3, 2}) AddNumber(bytes, parts[i], 2);
  }
  bytes.resize(52);
  return bytes;
}

}  // namespace kestra::test
