#include "VLib/src/data/edit/CfgOutline.h"

#include "VLib/src/data/CfgLine.h"
#include "VLib/src/data/edit/CfgTreeEdit.h"

namespace kestra {
namespace {

// Goes through the lines as the reader does, with no more than the depth instead of its stack:
// only the sections on the way to the parent matter, and they are open from the outermost on.
class CCfgScan {
 public:
  CCfgScan(const CfgEdit& edit, const CfgForm& form, CfgOutline& outline)
      : m_path(edit.parent),
        m_target(edit.target),
        m_isSection(edit.kind == CfgEditKind::AddSection ||
                    edit.kind == CfgEditKind::DeleteSection),
        m_isIni(form.layout == CfgLayout::Ini),
        m_ignoreCase(form.ignoreCase),
        m_out(outline) {
    if (m_path.empty()) EnterParent({});
  }

  // False behind the last line that matters.
  bool ReadLine(const CfgLine& line, CfgSpan span) {
    if (line.kind != CfgLineKind::Comment) {
      m_commentsBegin = m_nextComments;
      m_nextComments = span.end;
    }
    // Comments directly above are the line's own.
    const size_t ownBegin = line.kind == CfgLineKind::Open ? m_commentsBegin : span.begin;
    if (line.kind == CfgLineKind::Open) Open(line.name, span, ownBegin);
    if (line.kind == CfgLineKind::Close) Close(span);
    if (line.kind == CfgLineKind::Value) Value(line.name, span);
    return !m_isOver;
  }
  void Finish(size_t end) {
    if (!m_isOver) EndText(end);
  }

 private:
  // Directly. The scan ends where the parent does.
  bool IsInParent() const { return m_out.hasParent && m_depth == m_path.size(); }

  void EnterParent(CfgSpan header) {
    m_out.hasParent = true;
    m_out.header = header;
    m_out.keysEnd = header.end;
  }
  // True for the one that is meant.
  bool Counts(std::string_view name, const CfgStep& step, size_t& seen) const {
    return IsSameCfgName(name, step.name, m_ignoreCase) && seen++ == step.ordinal;
  }

  void Open(std::string_view name, CfgSpan span, size_t ownBegin) {
    // In the Ini layout the line also closes the section that it stands in.
    const bool closesOther = m_isIni && m_depth > 0;
    if (closesOther) Leave(ownBegin, span.begin);
    if (m_isOver) return;
    if (IsInParent()) {
      // Without keys of its own the top has its first one above all sections.
      if (m_path.empty() && !m_hasSection && m_out.lastKey.end == 0) m_out.keysEnd = ownBegin;
      m_hasSection = true;
      if (m_isSection && Counts(name, m_target, m_out.matches)) {
        m_out.hasTarget = m_isInTarget = true;
        m_out.target.begin = span.begin;
        m_targetClosesOther = closesOther;
      }
    } else if (m_depth == m_matched && m_matched < m_path.size() &&
               Counts(name, m_path[m_matched], m_seen[m_matched])) {
      if (++m_matched == m_path.size()) EnterParent(span);
    }
    ++m_depth;
  }
  void Close(CfgSpan span) {
    // Without its header the section before it needs the "[]" instead.
    const bool staysForOther = m_isInTarget && m_targetClosesOther;
    if (m_depth > 0) return Leave(staysForOther ? span.begin : span.end, span.begin);
    m_out.isTextClosed = true;
    EndText(span.begin);
  }
  // Closes the innermost section. Its lines reach up to end, its content up to contentEnd.
  void Leave(size_t end, size_t contentEnd) {
    if (IsInParent() && m_depth > 0) {
      m_out.parentEnd = contentEnd;
      m_isOver = true;
      return;
    }
    if (m_isInTarget && m_depth == m_path.size() + 1) {
      m_out.target.end = end;
      m_isInTarget = false;
    }
    --m_depth;
    if (m_matched > m_depth) m_matched = m_depth;
  }
  void Value(std::string_view name, CfgSpan span) {
    if (m_out.anyKey.end == 0) m_out.anyKey = span;
    if (!IsInParent()) return;
    m_out.lastKey = span;
    m_out.keysEnd = span.end;
    if (!m_isSection && Counts(name, m_target, m_out.matches)) {
      m_out.hasTarget = true;
      m_out.target = span;
    }
  }
  // All that is open ends with the text.
  void EndText(size_t end) {
    m_isOver = true;
    if (!m_out.hasParent) return;
    m_out.parentEnd = end;
    m_out.openBelow = m_depth - m_path.size();
    if (m_isInTarget) m_out.target.end = end;
    const bool isEmptyTop = m_path.empty() && !m_hasSection && m_out.lastKey.end == 0;
    if (isEmptyTop) m_out.keysEnd = end;
  }

  const std::vector<CfgStep>& m_path;
  const CfgStep& m_target;
  const bool m_isSection;
  const bool m_isIni;
  const bool m_ignoreCase;
  CfgOutline& m_out;
  std::vector<size_t> m_seen = std::vector<size_t>(m_path.size());  // by step of the path
  size_t m_depth = 0;                                               // of open sections
  size_t m_matched = 0;  // how many of them, from the outermost, are those of the path
  bool m_hasSection = false;
  bool m_isInTarget = false;
  bool m_targetClosesOther = false;  // its header, in the Ini layout
  bool m_isOver = false;
  size_t m_commentsBegin = 0;  // where the comments begin that stand directly above the line
  size_t m_nextComments = 0;
};

}  // namespace

bool FindCfgOutline(std::string_view text, const CfgEdit& edit, const CfgForm& form,
                    CTerminationLook& termination, CfgOutline& outline) {
  CCfgScan scan(edit, form, outline);
  std::string_view rest = text;
  bool goesOn = true;
  while (!rest.empty() && goesOn) {
    const size_t begin = text.size() - rest.size();
    const std::string_view line = CutCfgLine(rest);
    const size_t end = text.size() - rest.size();
    if (termination.IsOver(end - begin)) return false;
    goesOn = scan.ReadLine(ParseCfgLine(line), {begin, end});
  }
  scan.Finish(text.size());
  return true;
}

}  // namespace kestra
