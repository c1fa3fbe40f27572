#include "query/parse/Chart.h"

#include <algorithm>

#include "query/parse/Predicates.h"

namespace kestra {
namespace {

constexpr size_t kFirstHashSize = 256;

size_t HashOf(const ChartItem& item) {
  const uint64_t bits = uint64_t{item.Rule} << 32 | uint64_t{item.Dot} << 24 | item.Origin;
  return static_cast<size_t>(bits * 0x9E3779B97F4A7C15u >> 32);
}

}  // namespace

CChart::CChart(QueryContext& context, size_t tokenCount)
    : m_context(context), m_grammar(TheGrammar()), m_tokenCount(tokenCount) {}

bool CChart::TerminalFits(Symbol symbol, size_t position) {
  if (position >= m_tokenCount) return false;
  if (symbol.Kind == SymbolKind::Keyword) {
    return m_context.Tokens[position].keyword == symbol.Number;
  }
  return m_context.Predicates->Fits(static_cast<Predicate>(symbol.Number), position);
}

// Whether a rule can begin at the present position. One that cannot would never move its dot, and
// so can never be part of a tree.
bool CChart::CanStart(uint16_t rule) {
  const Grammar::Start& start = m_grammar.starts[rule];
  if (start.canBeEmpty) return true;
  if (m_present >= m_tokenCount) return false;
  const KeywordId keyword = m_context.Tokens[m_present].keyword;
  if (keyword != kNoKeyword && start.keywords[keyword]) return true;
  return std::any_of(start.predicates.begin(), start.predicates.end(), [&](Predicate predicate) {
    return m_context.Predicates->Fits(predicate, m_present);
  });
}

void CChart::BeginSet(size_t set) {
  m_present = set;
  m_setBegin.push_back(m_items.size());
  m_waiting.emplace_back().fill(kNone);
  m_lastWaiting.fill(kNone);
  m_isEmptyDone.fill(false);
  m_hash.assign(kFirstHashSize, kNone);
}

// Puts an item into the present set.
CChart::ItemIndex CChart::Append(ChartItem item) {
  const auto index = static_cast<ItemIndex>(m_items.size());
  m_items.push_back(item);
  m_nextWaiting.push_back(kNone);
  if (IsComplete(item)) {
    if (item.Origin == m_present) {
      m_isEmptyDone[static_cast<size_t>(m_grammar.rules[item.Rule].Table)] = true;
    }
  } else if (const Symbol next = NextSymbol(item); next.Kind == SymbolKind::NonTerminal) {
    ItemIndex& last = m_lastWaiting[next.Number];
    (last == kNone ? m_waiting.back()[next.Number] : m_nextWaiting[last]) = index;
    last = index;
  }
  const size_t mask = m_hash.size() - 1;
  size_t slot = HashOf(item) & mask;
  while (m_hash[slot] != kNone) slot = (slot + 1) & mask;
  m_hash[slot] = index;
  const size_t setSize = m_items.size() - m_setBegin.back();
  if (setSize * 2 > m_hash.size()) {
    m_hash.assign(m_hash.size() * 4, kNone);
    for (size_t i = m_setBegin.back(); i < m_items.size(); ++i) {
      size_t free = HashOf(m_items[i]) & (m_hash.size() - 1);
      while (m_hash[free] != kNone) free = (free + 1) & (m_hash.size() - 1);
      m_hash[free] = static_cast<ItemIndex>(i);
    }
  }
  return index;
}

bool CChart::AppendIfNew(ChartItem item) {
  const size_t mask = m_hash.size() - 1;
  for (size_t slot = HashOf(item) & mask; m_hash[slot] != kNone; slot = (slot + 1) & mask) {
    if (m_items[m_hash[slot]] == item) return false;
  }
  PushFrame(Append(item));
  return true;
}

void CChart::PushFrame(ItemIndex index) {
  const ChartItem item = m_items[index];
  if (IsComplete(item)) {
    m_frames.push_back({index, kNone, 0, true});
  } else if (const Symbol next = NextSymbol(item); next.Kind == SymbolKind::NonTerminal) {
    m_frames.push_back({index, kNone, 0, false});
  }
}

// The completer: the next item that waits for what is complete now, with its dot moved. The list
// may grow while it is walked.
bool CChart::StepCompleter(Frame& frame, ChartItem& found) {
  const ChartItem& item = m_items[frame.item];
  const auto table = static_cast<size_t>(m_grammar.rules[item.Rule].Table);
  const ItemIndex next =
      frame.last == kNone ? m_waiting[item.Origin][table] : m_nextWaiting[frame.last];
  if (next == kNone) return false;
  frame.last = next;
  found = m_items[next];
  ++found.Dot;
  return true;
}

// The predictor: first past a nonterminal that was already found to be empty here, then into each
// of its alternatives.
bool CChart::StepPredictor(Frame& frame, ChartItem& found) {
  const ChartItem& item = m_items[frame.item];
  const uint8_t table = NextSymbol(item).Number;
  if (frame.next == 0) {
    frame.next = 1;
    if (m_isEmptyDone[table]) {
      found = item;
      ++found.Dot;
      return true;
    }
  }
  const Grammar::Range range = m_grammar.alternatives[table];
  while (frame.next <= range.count) {
    const auto rule = static_cast<uint16_t>(range.first + frame.next - 1);
    ++frame.next;
    if (!CanStart(rule)) continue;
    found = {rule, static_cast<uint16_t>(m_present), 0};
    return true;
  }
  return false;
}

// Everything that follows from an item of the present set, depth first.
void CChart::Close(ItemIndex first) {
  PushFrame(first);
  while (!m_frames.empty()) {
    Frame& frame = m_frames.back();
    ChartItem found{};
    if (frame.isCompleting ? StepCompleter(frame, found) : StepPredictor(frame, found)) {
      AppendIfNew(found);
    } else {
      m_frames.pop_back();
    }
  }
}

// Moves the dots of the previous set's items over the token between the two.
void CChart::ScanInto(size_t set) {
  BeginSet(set);
  for (size_t i = SetBegin(set - 1); i < SetBegin(set); ++i) {
    ChartItem item = m_items[i];
    const Symbol next = NextSymbol(item);
    if (next.Kind != SymbolKind::Keyword && next.Kind != SymbolKind::Predicate) continue;
    if (!TerminalFits(next, set - 1)) continue;
    ++item.Dot;
    Close(Append(item));
  }
}

void CChart::Recognise() {
  BeginSet(0);
  const Grammar::Range start = m_grammar.alternatives[static_cast<size_t>(NonTerminal::Program)];
  for (uint16_t i = 0; i < start.count; ++i) {
    Close(Append({static_cast<uint16_t>(start.first + i), 0, 0}));
  }
  for (size_t set = 1; set <= m_tokenCount; ++set) {
    ScanInto(set);
    // Nothing can follow an empty set.
    if (SetBegin(set) == m_items.size() || m_context.IsCancelled()) return;
  }
}

size_t CChart::StopPosition() const {
  const size_t last = m_setBegin.size() - 1;
  return last > 0 && SetBegin(last) == m_items.size() ? last - 1 : last;
}

std::span<const ChartItem> CChart::ItemsAt(size_t position) const {
  if (position >= m_setBegin.size()) return {};
  return std::span(m_items).subspan(SetBegin(position), SetEnd(position) - SetBegin(position));
}

CChart::ItemIndex CChart::FindGoal() const {
  if (m_setBegin.size() != m_tokenCount + 1) return kNone;
  for (size_t i = SetBegin(m_tokenCount); i < m_items.size(); ++i) {
    const ChartItem& item = m_items[i];
    if (item.Origin == 0 && IsComplete(item) &&
        m_grammar.rules[item.Rule].Table == NonTerminal::Program) {
      return static_cast<ItemIndex>(i);
    }
  }
  return kNone;
}

bool CChart::SetHolds(size_t set, uint16_t rule, uint16_t origin) const {
  for (size_t i = SetBegin(set); i < SetEnd(set); ++i) {
    if (m_items[i].Rule == rule && m_items[i].Origin == origin) return true;
  }
  return false;
}

// The first complete item of a nonterminal that ends at a position and that item's rule had reached
// where it begins. How far the rule had come there is not compared.
CChart::ItemIndex CChart::FindChild(const ChartItem& item, uint8_t table, size_t end) const {
  for (size_t i = SetBegin(end); i < SetEnd(end); ++i) {
    const ChartItem& child = m_items[i];
    if (static_cast<uint8_t>(m_grammar.rules[child.Rule].Table) == table && IsComplete(child) &&
        SetHolds(child.Origin, item.Rule, item.Origin)) {
      return static_cast<ItemIndex>(i);
    }
  }
  return kNone;
}

// Goes down through rules that only hand a nonterminal's value on. False when a child is missing.
bool CChart::SkipPassThrough(ItemIndex& item, uint32_t& end) const {
  for (;;) {
    const Rule& rule = RuleOf(item);
    uint32_t place = 0;
    if (rule.Action == SecondSymbol) {
      place = 1;
    } else if (rule.Action != FirstSymbol) {
      return true;
    }
    const Symbol symbol = rule.Symbols[place];
    if (symbol.Kind != SymbolKind::NonTerminal) return true;
    end = end - rule.Length + place + 1;
    const ItemIndex child = FindChild(m_items[item], symbol.Number, end);
    if (child == kNone) return false;
    item = child;
  }
}

// Makes the node of one item and leaves a task for each of its nonterminals, from right to left.
bool CChart::BuildNode(const BuildTask& task, ParseTree& tree, std::vector<BuildTask>& tasks) {
  ItemIndex item = task.item;
  uint32_t position = task.end;
  if (!SkipPassThrough(item, position)) return false;
  const Rule& rule = RuleOf(item);
  ParseNode* pNode = tree.NewNode(m_context, task.pParent, rule);
  if (task.pSlot) {
    task.pSlot->pNode = pNode;
  } else {
    tree.SetTop(pNode);
  }
  for (size_t i = rule.Length; i-- > 0;) {
    const Symbol symbol = rule.Symbols[i];
    if (symbol.Kind != SymbolKind::NonTerminal) {
      if (position == 0) return false;
      pNode->Children[i].position = --position;
      continue;
    }
    const ItemIndex child = FindChild(m_items[item], symbol.Number, position);
    if (child == kNone) return false;
    tasks.push_back({child, position, pNode, &pNode->Children[i]});
    position = m_items[child].Origin;
  }
  return true;
}

bool CChart::Parse(ParseTree& tree) {
  Recognise();
  const ItemIndex goal = FindGoal();
  if (goal == kNone) return false;
  std::vector<BuildTask> tasks{{goal, static_cast<uint32_t>(m_tokenCount), nullptr, nullptr}};
  while (!tasks.empty()) {
    const BuildTask task = tasks.back();
    tasks.pop_back();
    if (!BuildNode(task, tree, tasks)) return false;
  }
  return true;
}

bool ParseTokens(QueryContext& context, ParseTree& tree) {
  return CChart(context).Parse(tree);
}

}  // namespace kestra
