#include "cli/shell/input/CompletionList.h"

#include <algorithm>

#include "cli/Terminal.h"
#include "cli/render/Width.h"
#include "cli/shell/TextTable.h"

namespace kestra::cli {
namespace {

constexpr size_t kMostDescribed = 20;
constexpr size_t kMostShown = 200;
constexpr size_t kUsualWidth = 80;

size_t ShownWidth() {
  const size_t width = TerminalWidth();
  return width == 0 ? kUsualWidth : width;
}

std::string Described(const Completion& completion) {
  CTextTable table;
  for (const auto& candidate : completion.candidates) {
    table.AddLine({"  " + candidate.text, FirstSentence(candidate.description)});
  }
  return table.Text(ShownWidth());
}

std::string SideBySide(const Completion& completion) {
  const size_t count = std::min(completion.candidates.size(), kMostShown);
  size_t width = 0;
  for (size_t i = 0; i < count; ++i) {
    width = std::max(width, WidthOf(Printable(completion.candidates[i].text)) + 2);
  }
  const size_t across = std::max<size_t>(1, ShownWidth() / width);
  const size_t lines = (count + across - 1) / across;
  std::string text;
  for (size_t line = 0; line < lines; ++line) {
    for (size_t i = line; i < count; i += lines) {
      const std::string shown = Printable(completion.candidates[i].text);
      text += shown;
      if (i + lines < count) text.append(width - WidthOf(shown), ' ');
    }
    text += '\n';
  }
  const size_t more = completion.candidates.size() - count;
  return more == 0 ? text : text + "... and " + std::to_string(more) + " more\n";
}

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

}  // namespace

std::string CommonBeginning(const Completion& completion) {
  std::string common = completion.candidates.front().text;
  const std::string folded = FoldCase(common);
  // Where a letter's small form has another length, nothing is compared without case.
  const bool canFold = !completion.isExact && folded.size() == common.size();
  for (const auto& candidate : completion.candidates) {
    const std::string other = FoldCase(candidate.text);
    const bool isFolded = canFold && other.size() == candidate.text.size();
    const std::string& left = isFolded ? folded : completion.candidates.front().text;
    const std::string& right = isFolded ? other : candidate.text;
    size_t same = 0;
    while (same < common.size() && same < right.size() && left[same] == right[same]) ++same;
    while (same > 0 && same < left.size() && IsContinuation(left[same])) --same;
    common.resize(same);
  }
  return common;
}

bool IsUsable(const Completion& completion, const std::string& line) {
  return !completion.candidates.empty() && completion.offset <= line.size() &&
         completion.length <= line.size() - completion.offset;
}

std::optional<std::string> TextToPutIn(const Completion& completion, const std::string& line) {
  const std::string common = CommonBeginning(completion);
  if (completion.candidates.size() > 1) {
    return common.size() > completion.length ? std::optional(common) : std::nullopt;
  }
  const size_t behind = completion.offset + completion.length;
  const bool isFollowed = line.compare(behind, completion.ending.size(), completion.ending) == 0;
  return isFollowed ? common : common + completion.ending;
}

std::string CompletionList(const Completion& completion) {
  const bool isDescribed =
      completion.candidates.size() <= kMostDescribed &&
      std::any_of(completion.candidates.begin(), completion.candidates.end(),
                  [](const auto& candidate) { return !candidate.description.empty(); });
  return isDescribed ? Described(completion) : SideBySide(completion);
}

}  // namespace kestra::cli
