#include "cli/shell/commands/DotArguments.h"

#include <algorithm>
#include <string_view>

namespace kestra::cli {
namespace {

constexpr const char* kBlanks = " \t\r\n";

// Parts a text at its blanks, byte by byte.
class CParts {
 public:
  enum class What { Blank, Quote, Content };
  What Read(char c) {
    const bool isBlank = m_quote == 0 && std::string_view(kBlanks).find(c) != std::string::npos;
    m_isFirst = !isBlank && !m_isInPart;
    m_isInPart = !isBlank;
    if (isBlank) return What::Blank;
    if (m_quote != 0 && c == m_quote) {
      m_quote = 0;
      return What::Quote;
    }
    const bool isOpening = m_isFirst && (c == '\'' || c == '"');
    if (isOpening) m_quote = c;
    return isOpening ? What::Quote : What::Content;
  }
  // Whether a part begins with what was read last.
  bool IsFirst() const { return m_isFirst; }
  // Whether a quote is not closed yet.
  bool IsQuoted() const { return m_quote != 0; }

 private:
  char m_quote = 0;
  bool m_isInPart = false;
  bool m_isFirst = false;
};

}  // namespace

DotArguments ParseArguments(const std::string& text) {
  DotArguments arguments;
  const size_t first = std::min(text.find_first_not_of(kBlanks), text.size());
  const size_t behind = text.find_last_not_of(" \t\r\n;") + 1;
  arguments.text = behind > first ? text.substr(first, behind - first) : std::string();
  CParts parts;
  for (const char c : arguments.text) {
    const auto what = parts.Read(c);
    if (parts.IsFirst()) arguments.words.emplace_back();
    if (what == CParts::What::Content) arguments.words.back() += c;
  }
  arguments.isWhole = !parts.IsQuoted();
  return arguments;
}

size_t LastArgument(const std::string& text) {
  CParts parts;
  size_t start = text.size();
  for (size_t i = 0; i < text.size(); ++i) {
    const auto what = parts.Read(text[i]);
    if (what == CParts::What::Blank) start = text.size();
    if (parts.IsFirst()) start = i;
  }
  return start;
}

}  // namespace kestra::cli
