#include "VLib/src/data/CfgNode.h"

#include "VLib/src/data/CfgWriter.h"
#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

CfgNode* FindChild(const CfgNode& node, std::string_view name) {
  for (const Ref<CfgNode>& child : node.Children)
    if (child->Name == name) return child.get();
  return nullptr;
}

// The next name of a path that is not empty; empty at its end.
std::string_view CutName(std::string_view& path) {
  const size_t first = path.find_first_not_of('\\');
  path.remove_prefix(first == std::string_view::npos ? path.size() : first);
  const std::string_view name = path.substr(0, path.find('\\'));
  path.remove_prefix(name.size());
  return name;
}

}  // namespace

// Takes the tree apart without recursion and without memory: a node that is being emptied keeps
// its parent's remaining children, and at their end its predecessor, in the place where it was
// itself.
CfgNode::~CfgNode() {
  std::vector<Ref<CfgNode>> current = std::move(Children);
  Ref<CfgNode> emptied;
  while (true) {
    if (!current.empty()) {
      Ref<CfgNode> child = std::move(current.back());
      current.pop_back();
      if (!child || child->IsShared() || child->Children.empty()) continue;
      current.swap(child->Children);
      child->Children.push_back(std::move(emptied));  // the capacity is there
      emptied = std::move(child);
    } else if (emptied) {
      Ref<CfgNode> previous = std::move(emptied->Children.back());
      emptied->Children.pop_back();
      current.swap(emptied->Children);
      emptied = std::move(previous);
    } else {
      return;
    }
  }
}

void CfgNode::Dump(std::string& out, size_t indent, uint32_t quoteFlags, CfgLayout layout) const {
  CTerminationLook never(nullptr);
  WriteCfgText(*this, indent, quoteFlags, layout, never, out);
}

bool CfgNode::ReadsBack(uint32_t quoteFlags, CfgLayout layout) const {
  return CfgTextReadsBack(*this, quoteFlags, layout);
}

CfgNode* CfgNode::Section(std::string_view path, bool create) {
  CfgNode* pNode = this;
  std::string_view name = CutName(path);
  if (name.empty()) return nullptr;
  for (; pNode && !name.empty(); name = CutName(path)) {
    CfgNode* const pChild = FindChild(*pNode, name);
    pNode = pChild || !create ? pChild : &pNode->AddSection(std::string(name));
  }
  return pNode;
}

const CfgNode* CfgNode::Section(std::string_view path) const {
  return const_cast<CfgNode*>(this)->Section(path, false);
}

CfgNode& CfgNode::AddSection(std::string name) {
  Children.push_back(MakeRef<CfgNode>(std::move(name)));
  return *Children.back();
}

const CfgValue* CfgNode::Find(std::string_view key) const {
  for (const Ref<CfgValue>& value : Values)
    if (value->Key == key) return value.get();
  return nullptr;
}

std::string CfgNode::GetText(std::string_view key, std::string_view fallback) const {
  const CfgValue* pValue = Find(key);
  return pValue ? pValue->Text : std::string(fallback);
}

int32_t CfgNode::GetNumber(std::string_view key, int32_t fallback) const {
  const CfgValue* pValue = Find(key);
  size_t consumed = 0;
  return pValue ? ParseInt32(pValue->Text, consumed) : fallback;
}

void CfgNode::SetText(std::string_view key, std::string text) {
  for (const Ref<CfgValue>& value : Values) {
    if (value->Key != key) continue;
    value->Text = std::move(text);
    return;
  }
  Values.push_back(MakeRef<CfgValue>(std::string(key), std::move(text)));
}

void CfgNode::SetNumber(std::string_view key, int32_t number) {
  SetText(key, std::to_string(number));
}

}  // namespace kestra
