#include "VLib/src/data/edit/CfgTreeEdit.h"

#include <algorithm>
#include <utility>

#include "VLib/src/text/Text.h"

namespace kestra {
namespace {

const std::string& NameOf(const CfgNode& node) {
  return node.Name;
}
const std::string& NameOf(const CfgValue& value) {
  return value.Key;
}

// The place of a step in a list; its end if there is none such.
template <class T>
auto FindStep(std::vector<Ref<T>>& list, const CfgStep& step, bool ignoreCase) {
  size_t left = step.ordinal;
  return std::find_if(list.begin(), list.end(), [&](const Ref<T>& entry) {
    return IsSameCfgName(NameOf(*entry), step.name, ignoreCase) && left-- == 0;
  });
}

CfgNode* FindParent(CfgNode& tree, const CfgEdit& edit, bool ignoreCase) {
  CfgNode* pNode = &tree;
  for (const CfgStep& step : edit.parent) {
    const auto found = FindStep(pNode->Children, step, ignoreCase);
    if (found == pNode->Children.end()) return nullptr;
    pNode = found->get();
  }
  return pNode;
}

template <class T>
CfgOutcome Add(std::vector<Ref<T>>& list, const CfgEdit& edit, bool ignoreCase, Ref<T> made) {
  const auto found = FindStep(list, {edit.target.name, 0}, ignoreCase);
  if (found != list.end()) return CfgOutcome::Exists;
  list.push_back(std::move(made));
  return CfgOutcome::Done;
}

template <class T>
CfgOutcome Remove(std::vector<Ref<T>>& list, const CfgStep& step, bool ignoreCase) {
  const auto found = FindStep(list, step, ignoreCase);
  if (found == list.end()) return CfgOutcome::Missing;
  list.erase(found);
  return CfgOutcome::Done;
}

CfgOutcome SetKey(CfgNode& parent, const CfgEdit& edit, bool ignoreCase) {
  const auto found = FindStep(parent.Values, edit.target, ignoreCase);
  if (found == parent.Values.end()) return CfgOutcome::Missing;
  (*found)->Text = edit.text;
  return CfgOutcome::Done;
}

bool HasSameValues(const CfgNode& a, const CfgNode& b, CTerminationLook& termination) {
  return std::equal(a.Values.begin(), a.Values.end(), b.Values.begin(), b.Values.end(),
                    [&](const Ref<CfgValue>& x, const Ref<CfgValue>& y) {
                      return !termination.IsOver(x->Key.size() + x->Text.size() + 1) &&
                             x->Key == y->Key && x->Text == y->Text;
                    });
}

}  // namespace

bool IsSameCfgName(std::string_view a, std::string_view b, bool ignoreCase) {
  return ignoreCase ? EqualsNoCase(a, b) : a == b;
}

CfgOutcome EditCfgTree(CfgNode& tree, const CfgEdit& edit, bool ignoreCase) {
  CfgNode* const pParent = FindParent(tree, edit, ignoreCase);
  if (!pParent) return CfgOutcome::Missing;
  const std::string& name = edit.target.name;
  switch (edit.kind) {
    case CfgEditKind::AddSection:
      return Add(pParent->Children, edit, ignoreCase, MakeRef<CfgNode>(name));
    case CfgEditKind::DeleteSection:
      return Remove(pParent->Children, edit.target, ignoreCase);
    case CfgEditKind::AddKey:
      return Add(pParent->Values, edit, ignoreCase, MakeRef<CfgValue>(name, edit.text));
    case CfgEditKind::SetKey:
      return SetKey(*pParent, edit, ignoreCase);
    case CfgEditKind::DeleteKey:
      return Remove(pParent->Values, edit.target, ignoreCase);
  }
  return CfgOutcome::Missing;
}

bool IsSameCfgTree(const CfgNode& a, const CfgNode& b, CTerminationLook& termination) {
  std::vector<std::pair<const CfgNode*, const CfgNode*>> pending{{&a, &b}};
  while (!pending.empty()) {
    const auto [pA, pB] = pending.back();
    pending.pop_back();
    if (termination.IsOver(pA->Name.size() + 1)) return false;
    if (pA->Name != pB->Name || pA->Children.size() != pB->Children.size()) return false;
    if (!HasSameValues(*pA, *pB, termination)) return false;
    for (size_t i = 0; i < pA->Children.size(); ++i)
      pending.emplace_back(pA->Children[i].get(), pB->Children[i].get());
  }
  return true;
}

}  // namespace kestra
