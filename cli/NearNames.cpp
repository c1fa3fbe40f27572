#include "cli/NearNames.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "cli/Terminal.h"

namespace kestra::cli {
namespace {

constexpr size_t kMostNames = 3;
constexpr size_t kLongestName = 256;  // what is longer is no slip of the keyboard

// How many letters must be put in, taken out, replaced, or swapped with their neighbour.
size_t Distance(const std::string& left, const std::string& right) {
  std::vector<size_t> before(right.size() + 1), last(right.size() + 1), line(right.size() + 1);
  std::iota(last.begin(), last.end(), size_t{0});
  for (size_t i = 1; i <= left.size(); ++i) {
    line[0] = i;
    for (size_t j = 1; j <= right.size(); ++j) {
      const size_t replaced = last[j - 1] + (left[i - 1] == right[j - 1] ? 0 : 1);
      line[j] = std::min({replaced, last[j] + 1, line[j - 1] + 1});
      const bool isSwapped =
          i > 1 && j > 1 && left[i - 1] == right[j - 2] && left[i - 2] == right[j - 1];
      if (isSwapped) line[j] = std::min(line[j], before[j - 2] + 1);
    }
    before.swap(last);
    last.swap(line);
  }
  return last.back();
}

}  // namespace

std::vector<std::string> NearNames(std::string_view wanted, const std::vector<std::string>& names) {
  std::vector<std::string> near;
  if (wanted.empty() || wanted.size() > kLongestName) return near;
  const std::string folded = FoldCase(std::string(wanted));
  std::vector<std::pair<size_t, size_t>> candidates;  // distance, number
  for (size_t i = 0; i < names.size(); ++i) {
    if (names[i].size() > kLongestName) continue;
    const std::string name = FoldCase(names[i]);
    const bool isBegun = folded.size() >= 3 && name.starts_with(folded);
    const size_t distance = isBegun ? 1 : Distance(folded, name);
    if (distance <= 1 + folded.size() / 4) candidates.push_back({distance, i});
  }
  std::sort(candidates.begin(), candidates.end());
  for (const auto& [distance, number] : candidates) {
    if (near.size() == kMostNames) break;
    if (std::find(near.begin(), near.end(), names[number]) == near.end()) {
      near.push_back(names[number]);
    }
  }
  return near;
}

std::string NearNamesSentence(std::string_view wanted, const std::vector<std::string>& names) {
  const std::vector<std::string> near = NearNames(wanted, names);
  std::string sentence;
  for (size_t i = 0; i < near.size(); ++i) {
    if (i != 0) sentence += i + 1 == near.size() ? " or " : ", ";
    sentence += near[i];
  }
  return sentence.empty() ? sentence : "; did you mean " + sentence + "?";
}

}  // namespace kestra::cli
