#include "query/parse/ColumnNames.h"

#include <string>
#include <unordered_map>

#include "query/eval/Actions.h"

namespace kestra {
namespace {

// The query's text from token first up to and without token end.
std::string TextBetween(const QueryContext& context, size_t first, size_t end) {
  if (first >= end) return {};
  const std::string_view from = context.Tokens[first].text;
  const std::string_view to = context.Tokens[end - 1].text;
  return std::string(from.data(), static_cast<size_t>(to.data() + to.size() - from.data()));
}

// "a.Name" without its alias.
std::string WithoutAlias(const std::string& text) {
  const size_t dot = text.find('.');
  const bool isColumn =
      dot != std::string::npos &&
      text.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.") ==
          std::string::npos;
  return isColumn ? text.substr(dot + 1) : text;
}

// The tokens where the values of a row are parted: SELECT, the commas, FROM.
std::vector<size_t> FindBorders(const ParseNode& select) {
  std::vector<size_t> borders{select.Children[0].position};
  const ParseNode* pList = select.ChildNode(1);
  std::vector<size_t> commas;
  while (pList && pList->Is(NonTerminal::ValueList) && pList->Rule->Length == 3) {
    commas.push_back(pList->Children[1].position);
    pList = pList->ChildNode(0);
  }
  borders.insert(borders.end(), commas.rbegin(), commas.rend());
  borders.push_back(select.ChildNode(2)->Children[0].position);
  return borders;
}

}  // namespace

std::vector<std::string> ColumnNames(const ParseNode& top) {
  if (top.Rule->Action != ValuePerRow) return {};
  const std::vector<size_t> borders = FindBorders(top);
  std::vector<std::string> texts, names;
  for (size_t i = 0; i + 1 < borders.size(); ++i) {
    texts.push_back(TextBetween(*top.Context, borders[i] + 1, borders[i + 1]));
    names.push_back(WithoutAlias(texts.back()));
  }
  std::unordered_map<std::string, size_t> uses;
  for (const std::string& name : names) ++uses[name];
  for (size_t i = 0; i < names.size(); ++i) {
    if (uses[names[i]] == 1) texts[i] = names[i];
  }
  return texts;
}

}  // namespace kestra
