#include "platform/image/registry/hive/HiveRepair.h"

#include <algorithm>

#include "platform/base/ByteSource.h"
#include "platform/os/CurrentTermination.h"

namespace kestra::image {
namespace {

constexpr size_t kHeaderSize = 0x1000;
constexpr size_t kPage = 0x1000;  // bins begin and end at multiples of it
constexpr size_t kBinHead = 32;
constexpr size_t kBinOffset = 4;
constexpr size_t kBinSize = 8;

void Store(std::string& bytes, size_t place, uint32_t number) {
  for (size_t i = 0; i < sizeof number; ++i, number >>= 8) {
    bytes[place + i] = static_cast<char>(number & 0xFF);
  }
}

uint32_t Load(const std::string& bytes, size_t place) {
  uint32_t number = 0;
  LoadLittle(bytes, place, number);
  return number;
}

// By its mark and by the offset that it says it has.
bool IsBin(const std::string& hive, size_t place) {
  return hive.compare(place, 4, "hbin") == 0 &&
         Load(hive, place + kBinOffset) == place - kHeaderSize;
}

bool IsBinOrEnd(const std::string& hive, size_t place, size_t end) {
  return place == end || (place < end && IsBin(hive, place));
}

// Where a cell's size makes no sense, nobody knows where the next one begins: what is left of the
// bin counts as free. A size is negative for a cell that is in use.
bool RepairCells(std::string& hive, size_t bin, size_t end, os::CPacedTermination& termination) {
  for (size_t place = bin + kBinHead; place < end && !termination.IsOver();) {
    const uint32_t stored = Load(hive, place);
    const size_t size = stored < 0x80000000 ? stored : 0u - stored;
    if (size == 0 || size % 8 != 0 || size > end - place) {
      Store(hive, place, static_cast<uint32_t>(end - place));
      return true;
    }
    place += size;
  }
  return false;
}

}  // namespace

bool RepairHeaderChecksum(std::string& head) {
  constexpr size_t kPlace = 508;
  if (head.size() < kPlace + sizeof(uint32_t)) return false;
  uint32_t checksum = 0;
  for (size_t at = 0; at < kPlace; at += sizeof checksum) checksum ^= Load(head, at);
  if (checksum == Load(head, kPlace)) return false;
  Store(head, kPlace, checksum);
  return true;
}

bool RepairBins(std::string& hive) {
  bool isRepaired = false;
  const size_t whole = hive.size() / kPage * kPage;
  const size_t end = std::min<uint64_t>(whole, uint64_t{kHeaderSize} + Load(hive, 40));
  os::CPacedTermination termination;
  for (size_t place = kHeaderSize; place < end && !termination.IsOver();) {
    const size_t size = Load(hive, place + kBinSize);
    const bool isSound =
        IsBin(hive, place) && size != 0 && size % kPage == 0 && size <= end - place;
    size_t next = place + size;
    if (!isSound) {
      next = place + kPage;
      while (!IsBinOrEnd(hive, next, end) && next < end) next += kPage;
      hive.replace(place, 4, "hbin");
      Store(hive, place + kBinOffset, static_cast<uint32_t>(place - kHeaderSize));
      Store(hive, place + kBinSize, static_cast<uint32_t>(next - place));
      isRepaired = true;
    }
    isRepaired = RepairCells(hive, place, next, termination) || isRepaired;
    place = next;
  }
  return isRepaired;
}

}  // namespace kestra::image
