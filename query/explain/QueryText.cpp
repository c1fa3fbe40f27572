#include "query/explain/QueryText.h"

#include <algorithm>
#include <vector>

namespace kestra {
namespace {

// The token at the left or right end of what stands below a node. A tree is as deep as its text, so
// it is walked from a list.
std::optional<size_t> EndToken(const ParseNode& node, bool isLeft) {
  struct Part {
    const ParseNode* pNode;  // null for a token
    size_t position;
  };
  std::vector<Part> open{{&node, 0}};
  while (!open.empty()) {
    const Part part = open.back();
    open.pop_back();
    if (!part.pNode) return part.position;
    const size_t length = part.pNode->Rule->Length;
    for (size_t i = 0; i < length; ++i) {
      const size_t symbol = isLeft ? length - 1 - i : i;
      const ParseNode* pChild = part.pNode->ChildNode(symbol);
      open.push_back({pChild, pChild ? 0 : part.pNode->Children[symbol].position});
    }
  }
  return std::nullopt;
}

int StepOf(const Token& token) {
  if (token.text == "(") return 1;
  return token.text == ")" ? -1 : 0;
}

}  // namespace

std::optional<TokenRange> RangeOf(const ParseNode& node) {
  const auto first = EndToken(node, true);
  const auto last = EndToken(node, false);
  if (!first || !last) return std::nullopt;
  return TokenRange{*first, *last + 1};
}

std::vector<int> DepthsOf(const QueryContext& context, TokenRange range) {
  std::vector<int> depths;
  int depth = 0;
  for (size_t i = range.first; i < range.end; ++i) {
    depths.push_back(depth);
    depth += StepOf(context.Tokens[i]);
  }
  return depths;
}

TokenRange ConditionRange(const ParseNode& condition, KeywordId begin) {
  const QueryContext& context = *condition.Context;
  TokenRange range = RangeOf(condition).value_or(TokenRange{});
  while (range.first > 0 && context.Tokens[range.first - 1].keyword != begin) --range.first;
  return WithClosings(context, range);
}

TokenRange WithClosings(const QueryContext& context, TokenRange range) {
  int depth = 0;
  for (size_t i = range.first; i < range.end; ++i) depth += StepOf(context.Tokens[i]);
  for (; depth > 0 && range.end < context.Tokens.size(); ++range.end)
    depth += StepOf(context.Tokens[range.end]);
  return range;
}

std::string TextOf(const QueryContext& context, TokenRange range) {
  std::string text;
  for (size_t i = range.first; i < range.end; ++i) {
    if (text.size() > kMostText) {
      text += " ...";
      break;
    }
    const std::string_view token = context.Tokens[i].text;
    if (i > range.first) {
      const std::string_view before = context.Tokens[i - 1].text;
      if (before.data() + before.size() != token.data()) text += ' ';
    }
    text += token;
  }
  std::replace_if(
      text.begin(), text.end(), [](char c) { return c == '\r' || c == '\n'; }, ' ');
  return text;
}

}  // namespace kestra
