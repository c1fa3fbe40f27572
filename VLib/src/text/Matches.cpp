#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

// A few milliseconds' work.
constexpr size_t kStepsBetweenLooks = 65536;

// One pattern element: "*", "?" or a character to compare.
enum class ElementKind { End, AnyRun, AnyOne, Character };

struct Element {
  ElementKind kind = ElementKind::End;
  uint32_t character = 0;
};

class CPatternReader {
 public:
  CPatternReader(std::string_view pattern, bool ignoreCase, bool escape)
      : m_pattern(pattern), m_ignoreCase(ignoreCase), m_escape(escape) {}

  // The element at position, which moves behind it. A backslash at the very end escapes nothing
  // and equals no character.
  Element Next(size_t& position) const {
    if (position >= m_pattern.size()) return {};
    const char first = m_pattern[position];
    if (first == '*') return ++position, Element{ElementKind::AnyRun};
    if (first == '?') return ++position, Element{ElementKind::AnyOne};
    if (first == '\\' && m_escape && ++position >= m_pattern.size()) return {};
    return {ElementKind::Character, Read(m_pattern, position)};
  }

  uint32_t Read(std::string_view text, size_t& position) const {
    const auto lead = static_cast<unsigned char>(text[position]);
    if (lead < 0x80) {  // nearly always; this is the inner loop of scans
      ++position;
      return m_ignoreCase && lead >= 'A' && lead <= 'Z' ? lead + 32u : lead;
    }
    const uint32_t character = NextCharacter(text, position);
    return m_ignoreCase ? FoldCharacter(character) : character;
  }

 private:
  std::string_view m_pattern;
  bool m_ignoreCase;
  bool m_escape;
};

}  // namespace

// A mismatch returns to the latest "*" only: a match that an earlier one could still find, the
// latest one finds too. So the time is the product of the lengths, not a power.
std::optional<bool> MatchesUnlessStopped(std::string_view text, std::string_view pattern,
                                         bool ignoreCase, bool escape,
                                         const std::function<bool()>& stop) {
  const CPatternReader reader(pattern, ignoreCase, escape);
  constexpr size_t kNone = std::string_view::npos;
  size_t s = 0;
  size_t p = 0;
  size_t backText = kNone;
  size_t backPattern = 0;
  for (size_t steps = 1; s < text.size(); ++steps) {
    if (steps % kStepsBetweenLooks == 0 && stop && stop()) return std::nullopt;
    const Element element = reader.Next(p);
    if (element.kind == ElementKind::AnyRun) {
      if (p >= pattern.size()) return true;
      backPattern = p;
      backText = s;
      continue;
    }
    if (element.kind != ElementKind::End) {
      const uint32_t character = reader.Read(text, s);
      if (element.kind == ElementKind::AnyOne || element.character == character) continue;
    }
    if (backText == kNone) return false;
    NextCharacter(text, backText);
    s = backText;
    p = backPattern;
  }
  while (p < pattern.size() && pattern[p] == '*') ++p;
  return p >= pattern.size();
}

bool Matches(std::string_view text, std::string_view pattern, bool ignoreCase, bool escape) {
  return MatchesUnlessStopped(text, pattern, ignoreCase, escape, nullptr).value_or(false);
}

}  // namespace kestra
