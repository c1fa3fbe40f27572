#include "VLib/src/data/edit/CfgTextEdit.h"

#include <algorithm>

#include "VLib/src/data/CfgLine.h"
#include "VLib/src/data/edit/CfgOutline.h"
#include "VLib/src/data/edit/CfgSurvey.h"

namespace kestra {
namespace {

constexpr std::string_view kBlanks = " \t";

// The line end that most lines have.
std::string_view LineEndOf(std::string_view text, std::string_view fallback,
                           CTerminationLook& termination) {
  size_t wide = 0, all = 0;
  for (size_t at = text.find('\n'), last = 0; at != std::string_view::npos;
       last = at, at = text.find('\n', at + 1)) {
    if (termination.IsOver(at - last)) break;
    ++all;
    if (at > 0 && text[at - 1] == '\r') ++wide;
  }
  if (2 * wide == all) return fallback;
  return 2 * wide > all ? "\r\n" : "\n";
}

std::string_view LeadOf(std::string_view line) {
  return line.substr(0, std::min(line.find_first_not_of(kBlanks), line.size()));
}

// Where the text of a key stands in its line, the blanks before it not included.
CfgSpan TextSpan(std::string_view line) {
  const CfgLine parsed = ParseCfgLine(line);
  if (!parsed.text.empty()) {
    const auto begin = static_cast<size_t>(parsed.text.data() - line.data());
    return {begin, begin + parsed.text.size()};
  }
  const size_t behind = line.find('=') + 1;
  const size_t begin = behind + LeadOf(line.substr(behind)).size();
  return {begin, begin};
}

// What stands between a key and its text: as in that line.
std::string SeparatorOf(std::string_view line) {
  const size_t equals = line.find('=');
  const bool isSpaced = equals > 0 && kBlanks.find(line[equals - 1]) != std::string_view::npos;
  const std::string usual = isSpaced ? " = " : "=";
  const CfgLine parsed = ParseCfgLine(line);
  if (parsed.name.empty() || parsed.text.empty()) return usual;
  const char* const pEnd = parsed.name.data() + parsed.name.size();
  const std::string_view between(pEnd, static_cast<size_t>(parsed.text.data() - pEnd));
  return between.find_first_not_of(" \t=") == std::string_view::npos ? std::string(between) : usual;
}

bool IsQuoted(std::string_view text) {
  return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

bool NeedsQuotes(std::string_view text) {
  return IsQuoted(text) ||
         (!text.empty() && (kCfgBlanks.find(text.front()) != std::string_view::npos ||
                            kCfgBlanks.find(text.back()) != std::string_view::npos));
}

class CCfgTextEdit {
 public:
  CCfgTextEdit(std::string& text, const CfgEdit& edit, const CfgForm& form,
               CTerminationLook& termination)
      : m_text(text), m_edit(edit), m_form(form), m_termination(termination) {}

  CfgOutcome Run() {
    const bool isIni = m_form.layout == CfgLayout::Ini;
    if (!FindCfgOutline(m_text, m_edit, m_form, m_termination, m_outline))
      return CfgOutcome::Terminated;
    if (!m_outline.hasParent) return CfgOutcome::Missing;
    const bool isNew = m_edit.kind == CfgEditKind::AddSection || m_edit.kind == CfgEditKind::AddKey;
    if (isNew && m_outline.matches > 0) return CfgOutcome::Exists;
    if (!isNew && !m_outline.hasTarget) return CfgOutcome::Missing;
    if (m_edit.kind == CfgEditKind::AddSection && isIni && !m_edit.parent.empty())
      return CfgOutcome::NotHeld;
    if (HasLoneCr(Touched())) return CfgOutcome::NotText;
    Apply();
    return m_termination.IsOverNow() ? CfgOutcome::Terminated : CfgOutcome::Done;
  }

 private:
  // What has to be the lines that others see, too. A section ends, and a new line begins, where the
  // other lines say.
  std::string_view Touched() const {
    const bool isLine = m_edit.kind == CfgEditKind::SetKey || m_edit.kind == CfgEditKind::DeleteKey;
    const CfgSpan span = isLine ? m_outline.target : CfgSpan{0, m_text.size()};
    return std::string_view(m_text).substr(span.begin, span.end - span.begin);
  }
  void Apply() {
    const CfgSpan target = m_outline.target;
    switch (m_edit.kind) {
      case CfgEditKind::AddSection:
        return AddSection();
      case CfgEditKind::AddKey:
        return AddKey();
      case CfgEditKind::SetKey:
        return SetKey();
      case CfgEditKind::DeleteSection:
      case CfgEditKind::DeleteKey:
        m_text.erase(target.begin, target.end - target.begin);
        return;
    }
  }
  std::string_view Line(const CfgSpan& span) const {
    const std::string_view line =
        std::string_view(m_text).substr(span.begin, span.end - span.begin);
    return line.substr(0, line.find('\n'));
  }
  std::string Quoted(bool always) const {
    const bool hasQuotes = (m_form.quoteFlags & kCfgQuotes) != 0;
    return hasQuotes && (always || NeedsQuotes(m_edit.text)) ? '"' + m_edit.text + '"'
                                                             : m_edit.text;
  }
  // Sections below the header's are one blank deeper, where they can be.
  std::string Indent() const {
    if (m_form.layout == CfgLayout::Ini || m_edit.parent.empty()) return {};
    return std::string(LeadOf(Line(m_outline.header))) + ' ';
  }

  void AddSection() {
    const bool isIni = m_form.layout == CfgLayout::Ini;
    const std::string indent = Indent();
    // What the end of the text closes in the Cfg layout would take the new section in.
    std::vector<std::string> lines(isIni ? 0 : m_outline.openBelow, "[]");
    lines.push_back(indent + '[' + m_edit.target.name + ']');
    // A "[]" may follow that ends the text.
    if (!isIni || m_outline.isTextClosed) lines.push_back(indent + "[]");
    Insert(m_outline.parentEnd, lines);
  }
  void AddKey() {
    const CfgSpan& model = m_outline.lastKey;
    const bool hasModel = model.end > 0;
    std::string line = hasModel ? std::string(LeadOf(Line(model))) : Indent();
    if (!hasModel && m_form.layout == CfgLayout::Ini && !m_edit.parent.empty())
      line = LeadOf(Line(m_outline.header));
    const CfgSpan& spelling = hasModel ? model : m_outline.anyKey;
    line += m_edit.target.name;
    line += spelling.end > 0 ? SeparatorOf(Line(spelling)) : " = ";
    line += Quoted(false);
    Insert(m_outline.keysEnd, {line});
  }
  void SetKey() {
    const std::string_view line = Line(m_outline.target);
    const CfgSpan span = TextSpan(line);
    const bool wasQuoted = IsQuoted(line.substr(span.begin, span.end - span.begin));
    m_text.replace(m_outline.target.begin + span.begin, span.end - span.begin, Quoted(wasQuoted));
  }

  // Puts whole lines at the beginning of a line or the end of the text.
  void Insert(size_t at, const std::vector<std::string>& lines) {
    const std::string_view lineEnd = LineEndOf(m_text, m_form.lineEnd, m_termination);
    // A last line that has no end keeps having none.
    const bool isBehindOpenLine = at == m_text.size() && at > 0 && m_text.back() != '\n';
    std::string inserted;
    for (const std::string& line : lines) {
      if (isBehindOpenLine) inserted += lineEnd;
      inserted += line;
      if (!isBehindOpenLine) inserted += lineEnd;
    }
    m_text.insert(at, inserted);
  }

  std::string& m_text;
  const CfgEdit& m_edit;
  const CfgForm& m_form;
  CTerminationLook& m_termination;
  CfgOutline m_outline;
};

}  // namespace

CfgOutcome EditCfgText(std::string& text, const CfgEdit& edit, const CfgForm& form,
                       CTerminationLook& termination) {
  std::string changed = text;
  const CfgOutcome outcome = CCfgTextEdit(changed, edit, form, termination).Run();
  if (outcome == CfgOutcome::Done) text = std::move(changed);
  return outcome;
}

}  // namespace kestra
