#include "query/eval/compiled/LikePattern.h"

#include <algorithm>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

bool IsAscii(char c) {
  return static_cast<unsigned char>(c) < 0x80;
}

char LowerAscii(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

}  // namespace

CLikePattern::CLikePattern(std::string_view pattern) : m_pattern(pattern) {
  if (pattern.size() < 2 || !std::all_of(pattern.begin(), pattern.end(), IsAscii)) return;
  const bool isAtEnd = pattern.front() == '*';
  if (!isAtEnd && pattern.back() != '*') return;
  const std::string_view word = isAtEnd ? pattern.substr(1) : pattern.substr(0, pattern.size() - 1);
  if (HasWildcard(word)) return;
  m_form = isAtEnd ? Form::AtEnd : Form::AtBegin;
  m_word.resize(word.size());
  std::transform(word.begin(), word.end(), m_word.begin(), LowerAscii);
}

// A character outside of ASCII may equal one inside of it, such as the sign of the kelvin and "k".
std::optional<bool> CLikePattern::MatchesAtOnce(std::string_view text) const {
  if (m_form == Form::Other) return std::nullopt;
  if (text.size() < m_word.size()) return false;
  const char* pText =
      m_form == Form::AtEnd ? text.data() + (text.size() - m_word.size()) : text.data();
  for (size_t i = 0; i < m_word.size(); ++i) {
    if (!IsAscii(pText[i])) return std::nullopt;
  }
  for (size_t i = 0; i < m_word.size(); ++i) {
    if (LowerAscii(pText[i]) != m_word[i]) return false;
  }
  return true;
}

std::optional<bool> CLikePattern::MatchesSlowly(std::string_view text,
                                                const std::function<bool()>& stop) const {
  return MatchesUnlessStopped(text, m_pattern, true, false, stop);
}

}  // namespace kestra
