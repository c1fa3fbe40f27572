#include "tests/VLib/data/CfgTrees.h"

#include <algorithm>
#include <iterator>
#include <string_view>

namespace kestra::test {

std::string Show(const CfgNode& node) {
  std::string shown;
  for (const Ref<CfgValue>& value : node.Values) shown += value->Key + "=" + value->Text + ";";
  for (const Ref<CfgNode>& child : node.Children)
    shown += "[" + child->Name + "|" + Show(*child) + "]";
  return shown;
}

bool IsSame(const CfgNode& a, const CfgNode& b) {
  const auto isSameValue = [](const auto& x, const auto& y) {
    return x->Key == y->Key && x->Text == y->Text;
  };
  const auto isSameSection = [](const auto& x, const auto& y) {
    return x->Name == y->Name && IsSame(*x, *y);
  };
  return std::equal(a.Values.begin(), a.Values.end(), b.Values.begin(), b.Values.end(),
                    isSameValue) &&
         std::equal(a.Children.begin(), a.Children.end(), b.Children.begin(), b.Children.end(),
                    isSameSection);
}

Ref<CfgNode> CTreeGenerator::Tree(size_t depth, bool isPlain) {
  auto root = MakeRef<CfgNode>();
  Fill(*root, depth, isPlain);
  return root;
}

uint32_t CTreeGenerator::Key() {
  // 4294967291 is the modulus of the shuffle, which leaves nothing of such a key.
  constexpr uint32_t kEdges[] = {1, 4294967290, 4294967291, 4294967292, 4294967295};
  const size_t choice = Number(10);
  return choice < std::size(kEdges) ? kEdges[choice] : static_cast<uint32_t>(m_random() | 1);
}

void CTreeGenerator::Fill(CfgNode& node, size_t depth, bool isPlain) {
  for (size_t i = Number(4); i > 0; --i)
    node.Values.push_back(MakeRef<CfgValue>(Word(isPlain), Word(isPlain)));
  for (size_t i = depth > 0 ? Number(4) : 0; i > 0; --i) {
    const std::string name = Word(isPlain);
    Fill(node.AddSection(isPlain ? "S" + name : name), depth - 1, isPlain);
  }
}

std::string CTreeGenerator::Word(bool isPlain) {
  constexpr std::string_view kPlain = "abcABC019-_.\\:'/#{}\"\xC3\xA4\xFF\xFE";
  constexpr std::string_view kHarmful(" \t\r\n\v;=[]\"\0", 11);
  std::string word;
  for (size_t i = Number(Number(8) == 0 ? 200 : 6); i > 0; --i) {
    const bool isHarmful = !isPlain && Number(12) == 0;
    const std::string_view from = isHarmful ? kHarmful : kPlain;
    word += from[Number(from.size())];
  }
  return word;
}

}  // namespace kestra::test
