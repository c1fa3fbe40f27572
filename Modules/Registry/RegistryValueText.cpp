#include "Modules/Registry/RegistryValueText.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>
#include <vector>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

constexpr const char* kStringValue = "StringValue";
constexpr const char* kDwordValue = "DWORDValue";

// --- Reading ---

std::string HexText(const std::string& data) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(data.size() * 3);
  for (const char c : data) {
    const auto byte = static_cast<unsigned char>(c);
    if (!text.empty()) text += ' ';
    text += kDigits[byte >> 4];
    text += kDigits[byte & 15];
  }
  return text;
}

// The end of the last string and the end of the list are no separators; either may be missing.
std::string MultiSzText(std::string_view data, const std::string& separator) {
  for (int i = 0; i < 2 && data.ends_with('\0'); ++i) data.remove_suffix(1);
  std::string text;
  for (const char c : data) {
    if (c == '\0')
      text += separator;
    else
      text += c;
  }
  return text;
}

// Little endian, as the type says.
std::optional<uint32_t> Number(const std::string& data) {
  if (data.size() != sizeof(uint32_t)) return std::nullopt;
  uint32_t number = 0;
  for (size_t i = 0; i < data.size(); ++i)
    number |= uint32_t{static_cast<unsigned char>(data[i])} << (8 * i);
  return number;
}

// --- Writing ---

std::string DwordData(uint32_t number) {
  std::string data;
  for (uint32_t shift = 0; shift < 32; shift += 8)
    data += static_cast<char>(number >> shift & 0xFF);
  return data;
}

std::optional<uint32_t> ReadNumber(const std::string& text) {
  int64_t number = 0;
  const char* const pEnd = text.data() + text.size();
  const auto [pRest, error] = std::from_chars(text.data(), pEnd, number);
  const bool isNumber = error == std::errc() && pRest == pEnd;
  if (!isNumber || number < std::numeric_limits<int32_t>::min() ||
      number > std::numeric_limits<uint32_t>::max())
    return std::nullopt;
  return static_cast<uint32_t>(number);
}

std::optional<std::string> ReadHexText(std::string text) {
  std::erase(text, ' ');
  if (text.size() % 2 != 0) return std::nullopt;
  std::string data;
  for (size_t i = 0; i < text.size(); i += 2) {
    unsigned byte = 0;
    const char* const pPair = text.data() + i;
    const auto [pRest, error] = std::from_chars(pPair, pPair + 2, byte, 16);
    if (error != std::errc() || pRest != pPair + 2) return std::nullopt;
    data += static_cast<char>(byte);
  }
  return data;
}

std::vector<std::string> SplitAt(const std::string& text, const std::string& separator) {
  std::vector<std::string> pieces;
  size_t start = 0;
  while (!separator.empty()) {
    const size_t end = text.find(separator, start);
    if (end == std::string::npos) break;
    pieces.push_back(text.substr(start, end - start));
    start = end + separator.size();
  }
  if (start < text.size()) pieces.push_back(text.substr(start));
  return pieces;
}

// The data of each type, out of what a statement gives. Nothing, with the message set, for what is
// refused.
class CValueData {
 public:
  CValueData(const DiagParams& params, const std::string& separator, QueryMessage& message)
      : m_pText(params.Find(kStringValue, true)),
        m_pNumber(params.Find(kDwordValue, true)),
        m_separator(separator),
        m_message(message) {}

  std::optional<std::string> Of(uint32_t type) {
    switch (type) {
      case kRegSz:
      case kRegExpandSz:
        return Text();
      case kRegBinary:
        return Binary();
      case kRegDword:
        return Dword();
      case kRegMultiSz:
        return MultiSz();
      default:
        return Refuse(11007, {"Type"});
    }
  }

 private:
  std::nullopt_t Refuse(uint32_t id, std::initializer_list<std::string> inserts) {
    m_message.RaiseMessage(id, inserts);
    return std::nullopt;
  }
  std::nullopt_t RefuseBoth() { return Refuse(11010, {kStringValue, kDwordValue}); }
  bool HasNul() {
    const bool hasNul = m_pText->StringValue.find('\0') != std::string::npos;
    if (hasNul) m_message.Fail(kErrorInvalidParameter);
    return hasNul;
  }

  std::optional<std::string> Text() {
    if (!m_pText) return Refuse(11000, {kStringValue});
    if (m_pNumber) return RefuseBoth();
    if (HasNul()) return std::nullopt;
    return m_pText->StringValue + '\0';
  }

  std::optional<std::string> Binary() {
    if (!m_pText) return Refuse(11000, {kStringValue});
    if (m_pNumber) return Refuse(11000, {kDwordValue});
    std::optional<std::string> data = ReadHexText(m_pText->StringValue);
    if (!data) return Refuse(11000, {m_pText->StringValue});
    return data;
  }

  std::optional<std::string> Dword() {
    if (!m_pText && !m_pNumber) return Refuse(11000, {"StringValue or DWORDValue"});
    if (!m_pText) return DwordData(m_pNumber->DWordValue);
    const std::optional<uint32_t> number = ReadNumber(m_pText->StringValue);
    if (!number) return Refuse(11002, {kStringValue, m_pText->StringValue});
    if (m_pNumber && m_pNumber->DWordValue != *number) return RefuseBoth();
    return DwordData(*number);
  }

  std::optional<std::string> MultiSz() {
    if (!m_pText) return Refuse(11000, {kStringValue});
    if (m_pNumber) return RefuseBoth();
    if (HasNul()) return std::nullopt;
    std::string data;
    for (const std::string& piece : SplitAt(m_pText->StringValue, m_separator)) {
      // The list would end there, and lose what follows.
      if (piece.empty()) return Refuse(16003, {});
      data += piece + '\0';
    }
    return data + '\0';
  }

  const DiagParam* const m_pText;
  const DiagParam* const m_pNumber;
  const std::string& m_separator;
  QueryMessage& m_message;
};

}  // namespace

void SetValueProperties(DiagParams& params, uint32_t type, const std::string& data,
                        const std::string& separator) {
  switch (type) {
    case kRegSz:
    case kRegExpandSz:
      params.SetText(kStringValue, data.substr(0, data.find('\0')));
      break;
    case kRegMultiSz:
      params.SetText(kStringValue, MultiSzText(data, separator));
      break;
    case kRegBinary:
    case kRegResourceList:
    case kRegFullResourceDescriptor:
    case kRegResourceRequirementsList:
      params.SetText(kStringValue, HexText(data));
      break;
    case kRegDword:
      if (const std::optional<uint32_t> number = Number(data))
        params.SetNumber(kDwordValue, *number);
      break;
    default:
      break;
  }
}

bool WriteValue(CRegistryKey& key, const std::string& name, uint32_t type,
                const std::string& separator, const DiagParams& params, QueryMessage& message) {
  const std::optional<std::string> data = CValueData(params, separator, message).Of(type);
  if (!data) return false;
  const SystemError error = key.SetValue(name, type, *data);
  return error == kErrorSuccess || message.Fail(error);
}

}  // namespace kestra
