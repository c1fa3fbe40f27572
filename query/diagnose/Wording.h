// Words for a reader: names that are near to a word, lists, and pieces of a query in a sentence.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestra {

// At most three of the names, the nearest first: the same in another case, then those with few
// changed letters, then those that contain the word. A name comes once. Empty if none is near.
std::vector<std::string> NearestNames(std::string_view word,
                                      std::span<const std::string_view> names);
// Whether the two differ in so few letters that one is probably the other misspelt.
bool IsNearlyThe(std::string_view word, std::string_view name);

// A piece of a text in double quotes, on one line and not longer than a sentence bears.
std::string InQuotes(std::string_view piece);
// A text as a string of the language.
std::string AsString(std::string_view text);
// "a, b or c"; empty for an empty list.
std::string ListOf(std::span<const std::string> texts, std::string_view lastJoin = " or ");
// "; did you mean a, b or c?"; empty for an empty list.
std::string DidYouMean(std::span<const std::string> suggestions);

}  // namespace kestra
