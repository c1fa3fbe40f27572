#include "VLib/src/data/CfgWriter.h"

#include <algorithm>
#include <vector>

#include "VLib/src/data/CfgReader.h"

namespace kestra {
namespace {

// Blanks and below, and as signed bytes all above ASCII.
bool IsBlankByte(char c) {
  return static_cast<signed char>(c) <= ' ';
}

bool NeedsQuotes(const std::string& text) {
  return text.empty() || IsBlankByte(text.front()) || IsBlankByte(text.back()) ||
         (text.front() == '"' && text.back() == '"');
}

class CCfgWriter {
 public:
  CCfgWriter(uint32_t quoteFlags, CfgLayout layout, CTerminationLook& termination, std::string& out)
      : m_hasQuotes((quoteFlags & kCfgQuotes) != 0),
        m_isIni(layout == CfgLayout::Ini),
        m_termination(termination),
        m_out(out) {}

  bool Write(const CfgNode& root, size_t indent) {
    Open(root, indent);
    while (!m_open.empty()) {
      Section& section = m_open.back();
      if (section.next < section.node->Children.size()) {
        const size_t level = section.indent + (section.node->Name.empty() ? 0 : 1);
        const CfgNode& child = *section.node->Children[section.next++];
        Open(child, std::max(section.indent, std::min(level, kCfgMostIndent)));
      } else {
        Close();
      }
      if (IsOver()) return false;
    }
    return true;
  }

 private:
  struct Section {
    const CfgNode* node;
    size_t indent;
    size_t next;  // child to be written next
  };

  void Open(const CfgNode& node, size_t indent) {
    if (!node.Name.empty()) {
      Indent(indent);
      m_out.append("[").append(node.Name).append("]\r\n");
    }
    for (const Ref<CfgValue>& value : node.Values) {
      if (IsOver()) break;
      Indent(indent + 1);
      m_out.append(value->Key).append(" = ");
      const char* const pQuote = m_hasQuotes && NeedsQuotes(value->Text) ? "\"" : "";
      m_out.append(pQuote).append(value->Text).append(pQuote).append("\r\n");
    }
    m_open.push_back({&node, indent, 0});
  }
  void Close() {
    const Section section = m_open.back();
    m_open.pop_back();
    if (m_isIni || section.node->Name.empty()) return;
    Indent(section.indent);
    m_out.append("[]\r\n");
  }
  void Indent(size_t blanks) {
    if (!m_isIni) m_out.append(blanks, ' ');
  }
  bool IsOver() {
    const size_t written = m_out.size() - m_looked;
    m_looked = m_out.size();
    return m_termination.IsOver(written);
  }

  bool m_hasQuotes;
  bool m_isIni;
  CTerminationLook& m_termination;
  std::string& m_out;
  size_t m_looked = m_out.size();  // what the termination look was told of
  std::vector<Section> m_open;
};

bool IsTrimmed(const std::string& text) {
  return text.empty() || (kCfgBlanks.find(text.front()) == std::string_view::npos &&
                          kCfgBlanks.find(text.back()) == std::string_view::npos);
}

bool HasLineEnd(const std::string& text) {
  return text.find('\n') != std::string::npos;
}

bool ValueReadsBack(const CfgValue& value, bool hasQuotes) {
  const std::string& key = value.Key;
  if (HasLineEnd(key) || HasLineEnd(value.Text)) return false;
  if (!IsTrimmed(key) || (!hasQuotes && !IsTrimmed(value.Text))) return false;
  if (key.find('=') != std::string::npos) return false;
  if (key.starts_with(';')) return false;
  // Such a line opens a section if it has a bracket to close it anywhere.
  return !key.starts_with('[') || (key + value.Text).find(']') == std::string::npos;
}

bool NameReadsBack(const std::string& name) {
  return !name.empty() && name.find_first_of("]\n") == std::string::npos;
}

}  // namespace

bool WriteCfgText(const CfgNode& node, size_t indent, uint32_t quoteFlags, CfgLayout layout,
                  CTerminationLook& termination, std::string& out) {
  return CCfgWriter(quoteFlags, layout, termination, out).Write(node, indent);
}

bool CfgTextReadsBack(const CfgNode& node, uint32_t quoteFlags, CfgLayout layout) {
  const bool hasQuotes = (quoteFlags & kCfgQuotes) != 0;
  std::vector<const CfgNode*> pending{&node};
  while (!pending.empty()) {
    const CfgNode& next = *pending.back();
    pending.pop_back();
    const bool isRoot = &next == &node && next.Name.empty();
    if (!isRoot && !NameReadsBack(next.Name)) return false;
    if (!isRoot && layout == CfgLayout::Ini && !next.Children.empty()) return false;
    for (const Ref<CfgValue>& value : next.Values)
      if (!ValueReadsBack(*value, hasQuotes)) return false;
    for (const Ref<CfgNode>& child : next.Children) pending.push_back(child.get());
  }
  return true;
}

}  // namespace kestra
