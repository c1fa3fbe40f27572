#include "VLib/src/data/CfgReader.h"

#include <iterator>
#include <string>
#include <vector>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

std::string_view TrimBackslashes(std::string_view path) {
  const size_t first = path.find_first_not_of('\\');
  return first == std::string_view::npos ? std::string_view() : TrimRight(path.substr(first), "\\");
}

std::string_view WithoutQuotes(std::string_view text) {
  const bool isQuoted = text.size() >= 2 && text.front() == '"' && text.back() == '"';
  return isQuoted ? text.substr(1, text.size() - 2) : text;
}

// The sections that are open, innermost last. Instead of a stack of calls, so that nesting costs
// the thread's stack nothing.
class CCfgReader {
 public:
  CCfgReader(CfgNode& root, std::string_view sectionPath, CfgMode mode, uint32_t quoteFlags,
             CfgLayout layout)
      : m_quoteFlags(quoteFlags), m_isIni(layout == CfgLayout::Ini) {
    m_open.push_back({&root, TrimBackslashes(sectionPath), mode});
  }

  void ReadLine(const CfgLine& line) {
    if (line.kind == CfgLineKind::Value) AddValue(line);
    if (line.kind == CfgLineKind::Open) Open(line.name);
    if (line.kind == CfgLineKind::Close) Close();
  }
  // The outermost section was closed.
  bool IsAtEnd() const { return m_open.empty(); }

 private:
  struct Section {
    CfgNode* pNode;
    std::string_view wanted;  // path below this section to what is loaded; empty: this section is
    CfgMode mode;
  };

  void AddValue(const CfgLine& line) {
    const Section& section = m_open.back();
    if (m_skipped > 0 || section.mode == CfgMode::Skip || !section.wanted.empty()) return;
    const std::string_view text =
        (m_quoteFlags & kCfgQuotes) != 0 ? WithoutQuotes(line.text) : line.text;
    section.pNode->Values.push_back(MakeRef<CfgValue>(std::string(line.name), std::string(text)));
  }

  void Open(std::string_view name) {
    // In the Ini layout the line also closes the named section that it stands in, and a skipped
    // section always has a name.
    if (m_isIni && m_skipped > 0) m_skipped = 0;
    while (m_isIni && !IsAtEnd() && !m_open.back().pNode->Name.empty()) m_open.pop_back();
    if (IsAtEnd()) return;
    const size_t separator = m_open.back().wanted.find('\\');
    const std::string_view first = m_open.back().wanted.substr(0, separator);
    Section& section = m_open.back();
    const bool isWanted = section.wanted.empty() || EqualsNoCase(name, first);
    if (m_skipped > 0 || section.mode == CfgMode::Skip || !isWanted) {
      ++m_skipped;
      return;
    }
    if (section.mode == CfgMode::OwnKeys && section.wanted.empty()) section.mode = CfgMode::Skip;
    const std::string_view rest = separator == std::string_view::npos
                                      ? std::string_view()
                                      : TrimBackslashes(section.wanted.substr(separator));
    CfgNode& child = section.pNode->AddSection(std::string(name));
    m_open.push_back({&child, rest, section.mode});
  }

  void Close() {
    if (m_skipped > 0)
      --m_skipped;
    else
      m_open.pop_back();
  }

  uint32_t m_quoteFlags;
  bool m_isIni;
  std::vector<Section> m_open;
  size_t m_skipped = 0;  // how deep we are in sections that are passed over
};

template <class T>
void MoveBehind(std::vector<T>& from, std::vector<T>& to) {
  to.insert(to.end(), std::make_move_iterator(from.begin()), std::make_move_iterator(from.end()));
  from.clear();
}

}  // namespace

bool ReadCfgText(CfgNode& node, std::string_view text, std::string_view sectionPath, CfgMode mode,
                 uint32_t quoteFlags, CfgLayout layout, CTerminationLook& termination) {
  // Read apart from the node, so that it gets all or nothing.
  CfgNode read(node.Name);
  CCfgReader reader(read, sectionPath, mode, quoteFlags, layout);
  while (!text.empty() && !reader.IsAtEnd()) {
    const std::string_view line = CutCfgLine(text);
    if (termination.IsOver(line.size() + 1)) return false;
    reader.ReadLine(ParseCfgLine(line));
  }
  node.Children.reserve(node.Children.size() + read.Children.size());
  MoveBehind(read.Values, node.Values);
  MoveBehind(read.Children, node.Children);
  return true;
}

}  // namespace kestra
