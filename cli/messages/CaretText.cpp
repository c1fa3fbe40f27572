#include "cli/messages/CaretText.h"

#include <algorithm>

#include "cli/render/Width.h"

namespace kestra::cli {
namespace {

constexpr std::string_view kCut = "...";
constexpr size_t kNarrowest = 20;
// A character has four bytes at most, and may have a few marks of no width.
constexpr size_t kBytesPerColumn = 16;

bool IsContinuation(char c) {
  return (static_cast<unsigned char>(c) & 0xC0) == 0x80;
}

size_t BehindCharacter(std::string_view text, size_t position) {
  ++position;
  while (position < text.size() && IsContinuation(text[position])) ++position;
  return position;
}

// The last characters of a printable text that take up at most so many columns, none of them a mark
// that belongs to a character before.
std::string_view TailOfWidth(std::string_view text, size_t width) {
  for (size_t left = WidthOf(text); left > width && !text.empty();) {
    const size_t first = BehindCharacter(text, 0);
    left -= std::min(left, WidthOf(text.substr(0, first)));
    text.remove_prefix(first);
  }
  while (!text.empty() && WidthOf(text.substr(0, BehindCharacter(text, 0))) == 0) {
    text.remove_prefix(BehindCharacter(text, 0));
  }
  return text;
}

}  // namespace

std::string CaretText(std::string_view text, size_t offset, size_t length, size_t width) {
  width = std::max(width, kNarrowest);
  offset = std::min(offset, text.size());
  const size_t newLine = text.substr(0, offset).rfind('\n');
  size_t begin = newLine == text.npos ? 0 : newLine + 1;
  size_t end = std::min(text.find('\n', offset), text.size());
  if (text.substr(begin, end - begin).find_first_not_of(" \t\r") == text.npos) return {};
  if (end > begin && text[end - 1] == '\r' && end - 1 >= offset) --end;
  // What is far off is not even looked at.
  const size_t reach = width * kBytesPerColumn;
  const bool isFar = offset - begin > reach;
  if (isFar) begin = offset - reach;
  while (begin < offset && IsContinuation(text[begin])) ++begin;
  end = std::min(end, offset + reach);
  while (end > offset && end < text.size() && IsContinuation(text[end])) --end;

  const std::string before = Printable(text.substr(begin, offset - begin));
  const size_t pieceEnd = std::min(end, offset + std::min(length, reach));
  const std::string piece = Printable(text.substr(offset, pieceEnd - offset));
  const std::string behind = Printable(text.substr(pieceEnd, end - pieceEnd));
  std::string line = before;
  const bool fits = !isFar && WidthOf(before) + WidthOf(piece) + WidthOf(behind) <= width;
  // Something of what stands behind the piece is to be seen, too.
  const size_t behindRoom = 1 + std::min(WidthOf(behind), width / 8);
  const size_t room = std::max(width / 2, width - std::min(width, WidthOf(piece) + behindRoom));
  if (!fits && (isFar || WidthOf(before) > room)) {
    line = std::string(kCut).append(TailOfWidth(before, room - kCut.size()));
  }
  const size_t indent = WidthOf(line);
  line = CutToWidth(line + piece + behind, width);
  const size_t under = std::clamp<size_t>(WidthOf(piece), 1, std::max<size_t>(1, width - indent));
  return line + '\n' + std::string(indent, ' ') + '^' + std::string(under - 1, '~') + '\n';
}

}  // namespace kestra::cli
