#include "tests/query/unit/PlainParser.h"

#include <fmt/format.h>

#include "VLib/src/text/Text.h"
#include "query/parse/Predicates.h"
#include "tests/query/unit/PlainColumns.h"

namespace kestra::test {
namespace {

struct Item {
  size_t rule;
  size_t dot;
  size_t origin;
  bool operator==(const Item&) const = default;
};

class CPlainParser {
 public:
  CPlainParser(QueryContext& context, std::set<size_t>* pUsed)
      : m_context(context), m_pUsed(pUsed), m_sets(context.Tokens.size() + 1) {}

  std::optional<TreeForm> Parse() {
    const size_t count = m_context.Tokens.size();
    for (const size_t rule : AlternativesOf(NonTerminal::Program)) {
      m_sets[0].push_back({rule, 0, 0});
      Closure(0, {rule, 0, 0});
    }
    for (size_t i = 1; i <= count; ++i) ScanInto(i);
    for (const Item& item : m_sets[count]) {
      if (RuleOf(item).Table != NonTerminal::Program || item.origin != 0 || !IsComplete(item)) {
        continue;
      }
      TreeForm form;
      if (!Build(item, count, form)) return std::nullopt;
      return form;
    }
    return std::nullopt;
  }

 private:
  const Rule& RuleOf(const Item& item) const { return m_rules[item.rule]; }
  bool IsComplete(const Item& item) const { return item.dot == RuleOf(item).Length; }
  Symbol Next(const Item& item) const { return RuleOf(item).Symbols[item.dot]; }
  bool WaitsFor(const Item& item, NonTerminal table) const {
    return !IsComplete(item) && Next(item).Kind == SymbolKind::NonTerminal &&
           Next(item).Number == static_cast<uint8_t>(table);
  }
  std::vector<size_t> AlternativesOf(NonTerminal table) const {
    std::vector<size_t> found;
    for (size_t i = 0; i < m_rules.size(); ++i) {
      if (m_rules[i].Table == table) found.push_back(i);
    }
    return found;
  }

  bool Fits(Symbol symbol, size_t position) {
    const Token& token = m_context.Tokens[position];
    if (symbol.Kind == SymbolKind::Keyword) {
      return EqualsNoCase(KeywordText(symbol.Number), token.text);
    }
    const auto predicate = static_cast<Predicate>(symbol.Number);
    switch (predicate) {
      case Predicate::NumberColumn:
        return IsColumn(position, {ParamType::Dword, ParamType::Enum, ParamType::Bitmask});
      case Predicate::StringColumn:
        return IsColumn(position, {ParamType::String, ParamType::Enum, ParamType::Bitmask});
      case Predicate::VersionColumn:
        return IsColumn(position, {ParamType::Version});
      case Predicate::DatimeColumn:
        return IsColumn(position, {ParamType::Datime});
      default:
        return CPredicateCache(m_context).Fits(predicate,
                                               position);  // a fresh one: nothing is kept
    }
  }
  bool IsColumn(size_t position, std::set<ParamType> wanted) {
    const DiagParamDef* pDef = PlainColumn(m_context, position);
    return pDef && wanted.contains(pDef->Type);
  }

  void ScanInto(size_t i) {
    for (size_t k = 0; k < m_sets[i - 1].size(); ++k) {
      Item item = m_sets[i - 1][k];
      if (IsComplete(item) || Next(item).Kind == SymbolKind::NonTerminal) continue;
      if (!Fits(Next(item), i - 1)) continue;
      ++item.dot;
      m_sets[i].push_back(item);
      Closure(i, item);
    }
  }

  void Add(size_t i, const Item& item) {
    for (const Item& known : m_sets[i]) {
      if (known == item) return;
    }
    m_sets[i].push_back(item);
    Closure(i, item);
  }

  void Closure(size_t i, const Item& item) {
    if (IsComplete(item)) {
      for (size_t k = 0; k < m_sets[item.origin].size(); ++k) {
        const Item waiting = m_sets[item.origin][k];
        if (!WaitsFor(waiting, RuleOf(item).Table)) continue;
        Add(i, {waiting.rule, waiting.dot + 1, waiting.origin});
      }
      return;
    }
    const Symbol next = Next(item);
    if (next.Kind != SymbolKind::NonTerminal) return;
    const auto table = static_cast<NonTerminal>(next.Number);
    for (const Item& known : m_sets[i]) {
      if (IsComplete(known) && known.origin == i && RuleOf(known).Table == table) {
        Add(i, {item.rule, item.dot + 1, item.origin});
        break;
      }
    }
    for (const size_t rule : AlternativesOf(table)) Add(i, {rule, 0, i});
  }

  const Item* FindChild(const Item& item, NonTerminal table, size_t p) const {
    for (const Item& child : m_sets[p]) {
      if (!IsComplete(child) || RuleOf(child).Table != table) continue;
      for (const Item& parent : m_sets[child.origin]) {
        if (parent.rule == item.rule && parent.origin == item.origin) return &child;
      }
    }
    return nullptr;
  }

  // A rule that only hands on the nonterminal at that place leaves no node.
  bool HandsOn(const Rule& rule, size_t place) const {
    const SemanticAction action = place == 0 ? FirstSymbol : SecondSymbol;
    return rule.Action == action && rule.Symbols[place].Kind == SymbolKind::NonTerminal;
  }

  bool Build(const Item& item, size_t end, TreeForm& form) {
    const Rule& rule = RuleOf(item);
    if (m_pUsed) m_pUsed->insert(item.rule);
    for (const size_t place : {0u, 1u}) {
      if (!HandsOn(rule, place)) continue;
      const size_t childEnd = end - rule.Length + place + 1;
      const Item* pChild =
          FindChild(item, static_cast<NonTerminal>(rule.Symbols[place].Number), childEnd);
      return pChild && Build(*pChild, childEnd, form);
    }
    std::vector<TreeForm> slots(rule.Length);
    size_t p = end;
    for (size_t i = rule.Length; i-- > 0;) {
      if (rule.Symbols[i].Kind != SymbolKind::NonTerminal) {
        slots[i] = {static_cast<uint32_t>(--p)};
        continue;
      }
      const Item* pChild = FindChild(item, static_cast<NonTerminal>(rule.Symbols[i].Number), p);
      if (!pChild || !Build(*pChild, p, slots[i])) return false;
      p = pChild->origin;
    }
    form.push_back(static_cast<uint32_t>(item.rule));
    for (const TreeForm& slot : slots) form.insert(form.end(), slot.begin(), slot.end());
    return true;
  }

  QueryContext& m_context;
  std::set<size_t>* const m_pUsed;
  const std::vector<Rule>& m_rules = TheGrammar().rules;
  std::vector<std::vector<Item>> m_sets;
};

bool AppendNode(const ParseNode& node, const ParseNode* pParent, QueryContext& context,
                TreeForm& form) {
  if (node.Parent != pParent || node.Context != &context) return false;
  form.push_back(static_cast<uint32_t>(node.Rule - TheGrammar().rules.data()));
  for (size_t i = 0; i < node.Rule->Length; ++i) {
    if (const ParseNode* pChild = node.ChildNode(i)) {
      if (!AppendNode(*pChild, &node, context, form)) return false;
    } else {
      form.push_back(node.Children[i].position);
    }
  }
  return true;
}

size_t AppendText(const TreeForm& form, size_t at, std::string& text) {
  const Rule& rule = TheGrammar().rules[form[at]];
  text += fmt::format("[{}", form[at++]);
  for (size_t i = 0; i < rule.Length; ++i) {
    if (rule.Symbols[i].Kind == SymbolKind::NonTerminal) {
      at = AppendText(form, at, text);
    } else {
      text += fmt::format(" {}", form[at++]);
    }
  }
  text += ']';
  return at;
}

}  // namespace

std::optional<TreeForm> PlainParse(QueryContext& context, std::set<size_t>* pUsed) {
  return CPlainParser(context, pUsed).Parse();
}

TreeForm FormOf(const ParseTree& tree, QueryContext& context) {
  TreeForm form;
  return AppendNode(*tree.Top(), nullptr, context, form) ? form : TreeForm();
}

std::string TextOf(const TreeForm& form) {
  std::string text;
  if (!form.empty()) AppendText(form, 0, text);
  return text;
}

}  // namespace kestra::test
