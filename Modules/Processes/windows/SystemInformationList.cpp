#include "Modules/Processes/windows/SystemInformationList.h"

#include <string_view>
#include <utility>

#include "platform/base/ByteSource.h"
#include "platform/base/text/Utf16.h"

namespace kestra {
namespace {

// Where the members lie; bytes.
struct EntryLayout {
  size_t pointerSize;
  uint64_t pid;
  uint64_t parentPid;
  uint64_t handleCount;
  uint64_t workingSet;
  size_t size;  // all that is read lies within
};
constexpr EntryLayout kNarrowEntry = {4, 0x44, 0x48, 0x4C, 0x68, 0x6C};
constexpr EntryLayout kWideEntry = {8, 0x50, 0x58, 0x60, 0x90, 0x98};
constexpr uint64_t kStartTime = 0x20;
constexpr uint64_t kNameLength = 0x38;

// The name's characters lie somewhere in the list, at an address of where it was written. Their
// number is added to nameBytes.
std::string NameOf(const SystemBytes& list, uint64_t entry, const EntryLayout& layout,
                   uint64_t& nameBytes) {
  const uint64_t nameAddress = entry + kNameLength + layout.pointerSize;
  uint16_t length = 0;
  uint64_t address = 0;
  LoadLittle(list.bytes, entry + kNameLength, length);
  LoadNumber(list.bytes, nameAddress, layout.pointerSize, ByteOrder::Little, address);
  if (address < list.address || address - list.address > list.bytes.size()) return {};
  const std::string_view rest =
      std::string_view(list.bytes).substr(static_cast<size_t>(address - list.address));
  if (rest.size() < length) return {};
  nameBytes += length;
  return Utf8FromUtf16(rest.substr(0, length));
}

bool DecodeEntry(const SystemBytes& list, uint64_t entry, const EntryLayout& layout,
                 uint64_t& nameBytes, ListedProcess& process) {
  if (list.bytes.size() < layout.size || entry > list.bytes.size() - layout.size) return false;
  LoadLittle(list.bytes, entry + layout.pid, process.pid);
  LoadLittle(list.bytes, entry + layout.parentPid, process.parentPid);
  LoadLittle(list.bytes, entry + layout.handleCount, process.handleCount);
  LoadLittle(list.bytes, entry + kStartTime, process.startTime);
  LoadNumber(list.bytes, entry + layout.workingSet, layout.pointerSize, ByteOrder::Little,
             process.workingSet);
  process.imageName = NameOf(list, entry, layout, nameBytes);
  return true;
}

}  // namespace

SystemError DecodeProcessList(const SystemBytes& list, uint32_t width,
                              std::vector<ListedProcess>& processes) {
  const EntryLayout& layout = width == 32 ? kNarrowEntry : kWideEntry;
  uint64_t entry = 0;
  uint64_t nameBytes = 0;
  for (;;) {
    ListedProcess process;
    if (!DecodeEntry(list, entry, layout, nameBytes, process) || nameBytes > list.bytes.size()) {
      return kErrorInvalidData;
    }
    processes.push_back(std::move(process));
    uint32_t next = 0;
    LoadLittle(list.bytes, entry, next);
    if (next == 0) return kErrorSuccess;
    if (next < layout.size) return kErrorInvalidData;  // into the entry itself
    entry += next;
  }
}

}  // namespace kestra
