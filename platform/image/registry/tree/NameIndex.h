// Finds places in a list of names, in any case. One block of memory: a map of millions of names
// would take longer to grow and to free than a cancel may.
#pragma once

#include <bit>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/image/registry/tree/FoldedName.h"

namespace kestra::image {

// The names stay where they are: nameAt, a function of a place, gives the name that was added for
// it.
class CNameIndex {
 public:
  static constexpr uint32_t kNone = 0xFFFFFFFF;

  CNameIndex() = default;
  // For that many names at most.
  explicit CNameIndex(size_t most) : m_slots(std::bit_ceil(2 * most + 2), kNone) {}
  bool IsEmpty() const { return m_slots.empty(); }

  // The place of the name; kNone if it was not added.
  template <class NameAt>
  uint32_t Find(std::string_view name, NameAt nameAt) const {
    return m_slots[SlotOf(name, nameAt)];
  }
  // The place that the name had already; kNone if it has the given one now.
  template <class NameAt>
  uint32_t Add(std::string_view name, uint32_t place, NameAt nameAt) {
    uint32_t& slot = m_slots[SlotOf(name, nameAt)];
    if (slot != kNone) return slot;
    slot = place;
    return kNone;
  }

 private:
  // The slot that holds the name, or else the free one where it belongs: that of its hash or one
  // behind it. Half of the slots are free at least.
  template <class NameAt>
  size_t SlotOf(std::string_view name, NameAt nameAt) const {
    const size_t mask = m_slots.size() - 1;
    size_t at = std::hash<std::string>()(FoldedName(name)) & mask;
    while (m_slots[at] != kNone && !EqualsNoCase(nameAt(m_slots[at]), name)) at = (at + 1) & mask;
    return at;
  }

  std::vector<uint32_t> m_slots;
};

}  // namespace kestra::image
