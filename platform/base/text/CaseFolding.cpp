#include <algorithm>
#include <iterator>

#include "platform/base/text/Characters.h"

namespace kestra {
namespace {

// Every step-th character from first to last folds to itself plus delta.
struct FoldingRow {
  uint32_t first;
  uint32_t last;
  uint32_t step;
  int32_t delta;
};

constexpr FoldingRow kFoldingRows[] = {
#include "platform/base/text/CaseFoldingTable.inc"
};

inline unsigned char FoldAscii(unsigned char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<unsigned char>(c + ('a' - 'A')) : c;
}

}  // namespace

uint32_t FoldCharacter(uint32_t character) {
  if (character < 0x80) return FoldAscii(static_cast<unsigned char>(character));
  const auto* row = std::upper_bound(std::begin(kFoldingRows), std::end(kFoldingRows), character,
                                     [](uint32_t c, const FoldingRow& r) { return c < r.first; });
  if (row == std::begin(kFoldingRows)) return character;
  --row;
  if (character > row->last || (character - row->first) % row->step != 0) return character;
  return static_cast<uint32_t>(static_cast<int32_t>(character) + row->delta);
}

int CompareNoCase(std::string_view a, std::string_view b) {
  size_t i = 0;
  size_t j = 0;
  while (i < a.size() && j < b.size()) {
    const auto ca = static_cast<unsigned char>(a[i]);
    const auto cb = static_cast<unsigned char>(b[j]);
    uint32_t fa = 0;
    uint32_t fb = 0;
    if ((ca | cb) < 0x80) {  // nearly all texts are ASCII
      if (ca == cb) {
        ++i, ++j;
        continue;
      }
      fa = FoldAscii(ca);
      fb = FoldAscii(cb);
      ++i, ++j;
    } else {
      fa = FoldCharacter(NextCharacter(a, i));
      fb = FoldCharacter(NextCharacter(b, j));
    }
    if (fa != fb) return fa < fb ? -1 : 1;
  }
  return static_cast<int>(i < a.size()) - static_cast<int>(j < b.size());
}

}  // namespace kestra
