#include "query/parse/chart/TreeBuilder.h"

namespace kestra {
namespace {

constexpr size_t kUsualTasks = 32;

}  // namespace

CTreeBuilder::CTreeBuilder(QueryContext& context, const CChartSets& sets, ParseTree& tree)
    : m_context(context), m_grammar(TheGrammar()), m_sets(sets), m_tree(tree) {}

bool CTreeBuilder::FindGoal(size_t tokenCount, Derivation& goal) const {
  if (m_sets.Count() != tokenCount + size_t{1}) return false;
  const CChartCore& core = m_sets.Core(tokenCount);
  const auto program = static_cast<size_t>(NonTerminal::Program);
  for (auto i = core.FirstComplete(program); i != CChartCore::kNone; i = core.Next(i)) {
    goal = {i, tokenCount};
    if (OriginOf(goal) == 0) return true;
  }
  return false;
}

// The first complete item of a nonterminal that ends at a position and that the parent's rule had
// reached where it begins. How far the rule had come there is not compared.
bool CTreeBuilder::FindChild(const Derivation& parent, uint8_t table, uint32_t end,
                             Derivation& child) const {
  const uint16_t parentRule = ItemOf(parent).Rule;
  const uint16_t parentOrigin = OriginOf(parent);
  const CChartCore& core = m_sets.Core(end);
  for (auto i = core.FirstComplete(table); i != CChartCore::kNone; i = core.Next(i)) {
    const uint16_t origin = m_sets.Origin(end, core.Items()[i].Slot);
    // Where the parent began its rule is, predicted.
    const bool isReached =
        origin == parentOrigin || m_sets.Core(origin).AnySlotOf(parentRule, [&](uint16_t slot) {
          return m_sets.Origin(origin, slot) == parentOrigin;
        });
    if (!isReached) continue;
    child = {i, end};
    return true;
  }
  return false;
}

// Goes down through rules that only hand a nonterminal's value on. False when a child is missing.
bool CTreeBuilder::SkipPassThrough(Derivation& derivation) const {
  for (;;) {
    const uint32_t ruleEnd = derivation.End();
    derivation = {m_sets.Core(ruleEnd).Below(derivation.Item()), ruleEnd};
    const Rule& rule = m_grammar.rules[ItemOf(derivation).Rule];
    uint32_t place = 0;
    if (rule.Action == SecondSymbol) {
      place = 1;
    } else if (rule.Action != FirstSymbol) {
      return true;
    }
    const Symbol symbol = rule.Symbols[place];
    if (symbol.Kind != SymbolKind::NonTerminal) return true;
    const uint32_t end = ruleEnd - rule.Length + place + 1;
    if (!FindChild(derivation, symbol.Number, end, derivation)) return false;
  }
}

// Makes the node of one item and leaves a task for each of its nonterminals, from right to left.
bool CTreeBuilder::BuildNode(Derivation derivation, ParseNode* pParent, ParseSlot* pSlot) {
  if (!SkipPassThrough(derivation)) return false;
  uint32_t position = derivation.End();
  const Rule& rule = m_grammar.rules[ItemOf(derivation).Rule];
  ParseNode* pNode = m_tree.NewNode(m_context, pParent, rule);
  if (pSlot) {
    pSlot->pNode = pNode;
  } else {
    m_tree.SetTop(pNode);
  }
  Derivation children[kMaxSymbols];
  ParseSlot* slots[kMaxSymbols];
  size_t childCount = 0;
  for (size_t i = rule.Length; i-- > 0;) {
    const Symbol symbol = rule.Symbols[i];
    if (symbol.Kind != SymbolKind::NonTerminal) {
      if (position == 0) return false;
      pNode->Children[i].position = --position;
      continue;
    }
    Derivation& child = children[childCount];
    if (!FindChild(derivation, symbol.Number, position, child)) return false;
    slots[childCount++] = &pNode->Children[i];
    position = OriginOf(child);
  }
  // The leftmost is done last, so that the tasks of a long list do not pile up.
  while (childCount-- > 0) {
    Task& task = m_tasks.emplace_back();
    task.derivation = children[childCount];
    task.pParent = pNode;
    task.pSlot = slots[childCount];
  }
  return true;
}

bool CTreeBuilder::Run(size_t tokenCount) {
  Derivation goal;
  if (!FindGoal(tokenCount, goal)) return false;
  m_tasks.reserve(kUsualTasks);
  if (!BuildNode(goal, nullptr, nullptr)) return false;
  while (!m_tasks.empty()) {
    const Task& task = m_tasks.back();
    const Derivation derivation = task.derivation;
    ParseNode* const pParent = task.pParent;
    ParseSlot* const pSlot = task.pSlot;
    m_tasks.pop_back();
    if (!BuildNode(derivation, pParent, pSlot)) return false;
  }
  return true;
}

}  // namespace kestra
