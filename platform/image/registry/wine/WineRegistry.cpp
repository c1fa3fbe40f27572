#include "platform/image/registry/wine/WineRegistry.h"

#include <charconv>

#include "platform/image/registry/wine/WineText.h"
#include "platform/image/registry/wine/WineTree.h"

namespace kestra::image {
namespace {

constexpr std::string_view kMark = "WINE REGISTRY Version 2";
constexpr std::string_view kRelative = ";; All keys relative to ";
constexpr std::string_view kWide = "#arch=win64";
constexpr std::string_view kTime = "#time=";
constexpr std::string_view kClass = "#class=\"";
constexpr std::string_view kLink = "#link";

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// Of a time in seconds since 1970; none if it is out of range.
FileTime FromUnixTime(std::string_view digits) {
  constexpr uint64_t kSecondsBefore1970 = 11644473600;
  uint32_t seconds = 0;
  const auto result = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
  if (result.ec != std::errc()) return {};
  return {(seconds + kSecondsBefore1970) * 10'000'000};
}

class CDecoder {
 public:
  CDecoder(std::string_view text, WineRegistry& registry)
      : m_lines(text), m_registry(registry), m_tree(std::make_shared<CWineTree>()) {}

  SystemError Decode() {
    std::string_view line;
    if (!m_lines.Next(line) || line != kMark) return kErrorRegistryCorrupt;
    while (m_lines.Next(line)) {
      if (!line.empty() && !ReadLine(line)) ++m_registry.damagedLines;
    }
    m_tree->Finish();
    // What was passed over now is not the text's fault.
    if (os::IsWorkTerminated()) return kErrorCancelled;
    m_registry.tree = std::move(m_tree);
    return kErrorSuccess;
  }

 private:
  bool ReadLine(std::string_view line) {
    switch (line.front()) {
      case '[':
        return m_hasKey = ReadKey(line);
      case '"':
      case '@':
        return ReadValue(line);
      case '#':
        return ReadOption(line);
      case ';':
        if (StartsWith(line, kRelative)) ReadRelative(line.substr(kRelative.size()));
        return true;
      default:
        return false;
    }
  }

  bool ReadKey(std::string_view line) {
    size_t position = 1;
    if (!ReadEscaped(line, position, ']', m_text)) return false;
    FileTime time{};
    if (position < line.size()) time = FromUnixTime(line.substr(position + 1));
    if (!m_tree->MakeKey(m_text, time, m_key)) return false;
    if (position < line.size()) m_tree->SetTime(m_key, time);
    return true;
  }

  bool ReadValue(std::string_view line) {
    size_t position = 1;
    m_text.clear();
    if (line.front() == '"' && !ReadEscaped(line, position, '"', m_text)) return false;
    if (position >= line.size() || line[position] != '=') return false;
    uint32_t type = 0;
    std::string data;
    return ReadWineValue(line.substr(position + 1), m_lines, type, data) && m_hasKey &&
           m_tree->AddValue(m_key, m_text, type, std::move(data));
  }

  // What is not known, as a later version may write it, says nothing about keys and values.
  bool ReadOption(std::string_view line) {
    if (line == kWide) m_registry.isWide = true;
    if (!m_hasKey) return !StartsWith(line, kTime) && !StartsWith(line, kClass) && line != kLink;
    if (line == kLink) m_tree->SetLink(m_key);
    if (StartsWith(line, kTime)) return ReadTime(line);
    return !StartsWith(line, kClass) || ReadClass(line);
  }

  bool ReadTime(std::string_view line) {
    size_t position = kTime.size();
    uint64_t ticks = 0;
    if (!ReadHex(line, position, 16, ticks) || position != line.size()) return false;
    m_tree->SetTime(m_key, {ticks});
    return true;
  }

  bool ReadClass(std::string_view line) {
    size_t position = kClass.size();
    if (!ReadEscaped(line, position, '"', m_text)) return false;
    m_tree->SetClass(m_key, m_text);
    return true;
  }

  // A path that is written with its backslashes doubled.
  void ReadRelative(std::string_view path) {
    m_registry.relativeTo.clear();
    for (size_t i = 0; i < path.size(); ++i) {
      m_registry.relativeTo += path[i];
      if (path.substr(i, 2) == "\\\\") ++i;
    }
  }

  CLineCursor m_lines;
  WineRegistry& m_registry;
  std::shared_ptr<CWineTree> m_tree;
  TreeId m_key = 0;
  bool m_hasKey = false;
  std::string m_text;
};

}  // namespace

SystemError DecodeWineRegistry(std::string_view text, WineRegistry& registry) {
  registry = {};
  return CDecoder(text, registry).Decode();
}

}  // namespace kestra::image
