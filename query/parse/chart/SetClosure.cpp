#include "query/parse/chart/SetClosure.h"

#include <algorithm>

#include "query/parse/Predicates.h"

namespace kestra {
namespace {

constexpr size_t kFirstHashSize = 256;

size_t HashOf(const CoreItem& item) {
  const uint64_t bits = uint64_t{item.Rule} << 32 | uint64_t{item.Dot} << 24 | item.Slot;
  return static_cast<size_t>(bits * 0x9E3779B97F4A7C15u >> 32);
}

}  // namespace

CSetClosure::CSetClosure(QueryContext& context, const CChartSets& sets)
    : m_context(context), m_grammar(TheGrammar()), m_sets(sets) {}

void CSetClosure::Run(const ChartStepKey& key, size_t tokenCount) {
  Clear(m_sets.Count());
  m_isAtEnd = m_present >= tokenCount;
  m_lookahead = key.Lookahead();
  if (m_present == 0) {
    Start();
  } else {
    Scan(key);
  }
}

void CSetClosure::Clear(size_t set) {
  m_present = set;
  m_asked = 0;
  m_items.clear();
  m_next.clear();
  m_firstWaiting.fill(kNone);
  m_lastWaiting.fill(kNone);
  m_isEmptyDone.fill(false);
  m_hash.assign(kFirstHashSize, kNone);
  m_origins.assign(1, static_cast<uint16_t>(set));
  m_steps.clear();
  m_ways.clear();
  m_isCoreKnown.assign(1, true);
}

void CSetClosure::Start() {
  const Grammar::Range start = m_grammar.alternatives[static_cast<size_t>(NonTerminal::Program)];
  for (uint16_t i = 0; i < start.count; ++i) {
    Close(Append({static_cast<uint16_t>(start.first + i), 0, 0}));
  }
}

// Moves the dots of the previous set's items over the token between the two.
void CSetClosure::Scan(const ChartStepKey& key) {
  const CChartCore& previous = m_sets.Core(m_present - 1);
  for (const ItemIndex index : previous.Scannable()) {
    CoreItem item = previous.Items()[index];
    const Symbol next = m_grammar.rules[item.Rule].Symbols[item.Dot];
    const bool fits = next.Kind == SymbolKind::Keyword ? next.Number == key.Token()
                                                       : (key.Fits() >> next.Number & 1) != 0;
    if (!fits) continue;
    item.Slot = SlotBy(ChartStep::Kind::Previous, 0, item.Slot);
    ++item.Dot;
    Close(Append(item));
  }
}

// Whether a rule can begin at the present position. One that cannot would never move its dot, and
// so can never be part of a tree.
bool CSetClosure::CanStart(uint16_t rule) {
  const Grammar::Start& start = m_grammar.starts[rule];
  if (start.canBeEmpty) return true;
  if (m_isAtEnd) return false;
  if (m_lookahead != kNoKeyword && start.keywords[m_lookahead]) return true;
  m_asked |= start.predicates;
  return m_context.Predicates->FitsOf(start.predicates, m_present) != 0;
}

// The slot of a position that is known by the way to it. The way is written down, once.
uint16_t CSetClosure::SlotBy(ChartStep::Kind kind, uint16_t slot, uint16_t index) {
  for (const KnownWay& way : m_ways) {
    if (way.kind == kind && way.slot == slot && way.index == index) return way.target;
  }
  const size_t set = kind == ChartStep::Kind::Previous ? m_present - 1 : m_origins[slot];
  const uint16_t target = SlotOf(m_sets.Origin(set, index));
  m_steps.push_back({kind, slot, index, target});
  m_ways.push_back({kind, slot, index, target});
  return target;
}

uint16_t CSetClosure::SlotOf(uint16_t origin) {
  const auto it = std::find(m_origins.begin(), m_origins.end(), origin);
  const auto slot = static_cast<uint16_t>(it - m_origins.begin());
  if (it == m_origins.end()) {
    m_origins.push_back(origin);
    m_isCoreKnown.push_back(false);
  }
  return slot;
}

void CSetClosure::PutIntoHash(ItemIndex index) {
  const size_t mask = m_hash.size() - 1;
  size_t place = HashOf(m_items[index]) & mask;
  while (m_hash[place] != kNone) place = (place + 1) & mask;
  m_hash[place] = index;
}

// Puts an item into the set.
CSetClosure::ItemIndex CSetClosure::Append(CoreItem item) {
  const auto index = static_cast<ItemIndex>(m_items.size());
  m_items.push_back(item);
  m_next.push_back(kNone);
  const Rule& rule = m_grammar.rules[item.Rule];
  const Symbol next = rule.Symbols[item.Dot];
  if (next.Kind == SymbolKind::End) {
    if (item.Slot == 0) m_isEmptyDone[static_cast<size_t>(rule.Table)] = true;
  } else if (next.Kind == SymbolKind::NonTerminal) {
    ItemIndex& last = m_lastWaiting[next.Number];
    (last == kNone ? m_firstWaiting[next.Number] : m_next[last]) = index;
    last = index;
  }
  if (m_items.size() * 2 > m_hash.size()) {
    m_hash.assign(m_hash.size() * 4, kNone);
    for (ItemIndex i = 0; i < index; ++i) PutIntoHash(i);
  }
  PutIntoHash(index);
  return index;
}

void CSetClosure::AppendIfNew(CoreItem item) {
  const size_t mask = m_hash.size() - 1;
  for (size_t place = HashOf(item) & mask; m_hash[place] != kNone; place = (place + 1) & mask) {
    if (m_items[m_hash[place]] == item) return;
  }
  PushFrame(Append(item));
}

void CSetClosure::PushFrame(ItemIndex index) {
  const CoreItem item = m_items[index];
  const SymbolKind next = m_grammar.rules[item.Rule].Symbols[item.Dot].Kind;
  if (next == SymbolKind::End || next == SymbolKind::NonTerminal) {
    m_frames.push_back({index, kNone, 0, next == SymbolKind::End});
  }
}

// The completer: the next item that waits for what is complete now, with its dot moved. The list
// of the present set may grow while it is walked.
bool CSetClosure::StepCompleter(Frame& frame, CoreItem& found) {
  const CoreItem item = m_items[frame.item];
  const auto table = static_cast<size_t>(m_grammar.rules[item.Rule].Table);
  if (item.Slot == 0) {
    const ItemIndex next = frame.last == kNone ? m_firstWaiting[table] : m_next[frame.last];
    if (next == kNone) return false;
    frame.last = next;
    found = m_items[next];
    ++found.Dot;
    return true;
  }
  const CChartCore& begun = m_sets.Core(m_origins[item.Slot]);
  if (!m_isCoreKnown[item.Slot]) {
    m_isCoreKnown[item.Slot] = true;
    m_steps.push_back({ChartStep::Kind::Core, item.Slot, 0, begun.Id()});
  }
  const ItemIndex next = frame.last == kNone ? begun.FirstWaiting(table) : begun.Next(frame.last);
  if (next == kNone) return false;
  frame.last = next;
  found = begun.Items()[next];
  ++found.Dot;
  found.Slot =
      found.Slot == 0 ? item.Slot : SlotBy(ChartStep::Kind::Through, item.Slot, found.Slot);
  return true;
}

// The predictor: first past a nonterminal that was already found to be empty here, then into each
// of its alternatives.
bool CSetClosure::StepPredictor(Frame& frame, CoreItem& found) {
  const CoreItem& item = m_items[frame.item];
  const uint8_t table = m_grammar.rules[item.Rule].Symbols[item.Dot].Number;
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
    found = {rule, 0, 0};
    return true;
  }
  return false;
}

// Everything that follows from an item of the set, depth first.
void CSetClosure::Close(ItemIndex first) {
  PushFrame(first);
  while (!m_frames.empty()) {
    Frame& frame = m_frames.back();
    CoreItem found{};
    if (frame.isCompleting ? StepCompleter(frame, found) : StepPredictor(frame, found)) {
      AppendIfNew(found);
    } else {
      m_frames.pop_back();
    }
  }
}

}  // namespace kestra
