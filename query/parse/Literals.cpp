#include "query/parse/Literals.h"

#include <optional>

#include "VLib/src/text/Text.h"
#include "VLib/src/text/VersionNumber.h"
#include "VLib/src/time/Datime.h"

namespace kestra {
namespace {

std::optional<int32_t> IntegerOf(std::string_view token) {
  size_t consumed = 0;
  const int32_t number = ParseInt32(token, consumed);
  if (token.empty() || consumed != token.size()) return std::nullopt;
  if (number == INT32_MAX || number == INT32_MIN) return std::nullopt;
  return number;
}

std::optional<std::string> TextOf(std::string_view token) {
  if (token.size() < 2 || token.front() != '\'' || token.back() != '\'') return std::nullopt;
  token = token.substr(1, token.size() - 2);
  std::string text;
  text.reserve(token.size());
  for (size_t i = 0; i < token.size(); ++i) {
    text += token[i];
    if (token[i] != '\'') continue;
    if (++i >= token.size() || token[i] != '\'') return std::nullopt;
  }
  return text;
}

// The number that stands at a place of a date, all of it digits.
bool ReadField(std::string_view token, size_t position, size_t length, uint16_t from, uint16_t to,
               uint16_t& field) {
  unsigned number = 0;
  for (const char c : token.substr(position, length)) {
    if (!IsAsciiDigit(c)) return false;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  field = static_cast<uint16_t>(number);
  return number >= from && number <= to;
}

// The question marks are escaped, since two of them and a mark once spelled a trigraph.
constexpr std::string_view kDatePattern = "'\?\?\?\?-\?\?-\?\?'";
constexpr std::string_view kDateTimePattern = "'\?\?\?\?-\?\?-\?\? \?\?:\?\?:\?\?'";

bool HasShape(std::string_view token, std::string_view pattern) {
  return token.size() == pattern.size() && Matches(token, pattern, false, false);
}

}  // namespace

bool ReadIntegerLiteral(std::string_view token, Value& out) {
  const auto number = IntegerOf(token);
  if (number) out.SetNumber(*number);
  return number.has_value();
}

bool ReadStringLiteral(std::string_view token, Value& out) {
  auto text = TextOf(token);
  if (text) out.SetString(std::move(*text));
  return text.has_value();
}

bool IsStringLiteral(std::string_view token) {
  if (token.size() < 2 || token.front() != '\'' || token.back() != '\'') return false;
  token = token.substr(1, token.size() - 2);
  for (size_t quote = token.find('\''); quote != token.npos; quote = token.find('\'', quote + 2)) {
    if (quote + 1 >= token.size() || token[quote + 1] != '\'') return false;
  }
  return true;
}

bool IsVersionLiteral(std::string_view token) {
  if (!IsStringLiteral(token)) {
    const auto number = IntegerOf(token);
    return number && *number >= 0;
  }
  // No version has a quote in it, so doubled ones need not become single first.
  return IsVersion(token.substr(1, token.size() - 2));
}

bool ReadVersionLiteral(std::string_view token, Value& out) {
  if (auto text = TextOf(token)) {
    if (!IsVersion(*text)) return false;
    out.SetString(std::move(*text));
    return true;
  }
  const auto number = IntegerOf(token);
  if (!number || *number < 0) return false;
  out.SetNumber(*number);
  return true;
}

bool ReadDatimeLiteral(std::string_view token, Value& out) {
  const bool hasTime = HasShape(token, kDateTimePattern);
  if (!hasTime && !HasShape(token, kDatePattern)) return false;
  SystemTime time;
  if (!ReadField(token, 1, 4, 1970, 2106, time.wYear) ||
      !ReadField(token, 6, 2, 1, 12, time.wMonth) || !ReadField(token, 9, 2, 1, 31, time.wDay)) {
    return false;
  }
  if (hasTime && (!ReadField(token, 12, 2, 0, 23, time.wHour) ||
                  !ReadField(token, 15, 2, 0, 59, time.wMinute) ||
                  !ReadField(token, 18, 2, 0, 59, time.wSecond))) {
    return false;
  }
  const auto datime = DatimeFromSystemTime(time, true);
  if (datime) out.SetDatime(*datime);
  return datime.has_value();
}

}  // namespace kestra
