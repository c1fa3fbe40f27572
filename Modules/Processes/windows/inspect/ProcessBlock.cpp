#include "Modules/Processes/windows/inspect/ProcessBlock.h"

#include <optional>

#include "platform/base/ByteSource.h"
#include "platform/base/text/Utf16.h"

namespace kestra {
namespace {

// Where things lie in a process of one width; bytes.
struct BlockLayout {
  size_t pointerSize;
  uint64_t parametersPointer;  // in the block
  size_t parametersSize;
  size_t leastParameters;  // so many must have come
  uint64_t imagePath;      // in the parameters, as the two below: each is a counted string
  uint64_t commandLine;
  uint64_t windowTitle;
};
constexpr BlockLayout kNarrowLayout = {4, 0x10, 0x290, 0x48, 0x38, 0x40, 0x70};
constexpr BlockLayout kWideLayout = {8, 0x20, 0x2C8, 0x80, 0x60, 0x70, 0xB0};

constexpr size_t kNarrowBasicSize = 0x18;
constexpr size_t kWideBasicSize = 0x30;

// How one caller reads one target.
class CBlockAccess {
 public:
  // Where the system cannot be asked for a process's width, nothing is known to be narrow, and the
  // system's own width decides: one of 32 bits that does not know the question has no other
  // processes, and on one of 64 most have its width.
  CBlockAccess(CProcessHandle& process, const BlockReader& reader, bool isNarrow)
      : m_process(process),
        m_isNarrowCaller(reader.callerWidth == 32),
        m_isNarrowTarget(isNarrow || !reader.isWideSystem) {}

  const BlockLayout& Layout() const { return m_isNarrowTarget ? kNarrowLayout : kWideLayout; }

  // The address of the block.
  bool FindBlock(uint64_t& address) const {
    std::string bytes;
    if (m_isNarrowTarget && !m_isNarrowCaller) {
      return m_process.QueryInformation(kProcessWow64Information, sizeof(uint64_t), bytes) ==
                 kErrorSuccess &&
             LoadPointer(bytes, 0, sizeof(uint64_t), address);
    }
    // The address stands behind the exit status, which takes the room of a pointer.
    const size_t pointerSize = Layout().pointerSize;
    const size_t size = m_isNarrowTarget ? kNarrowBasicSize : kWideBasicSize;
    const SystemError error =
        IsAcross() ? m_process.QueryInformation64(kProcessBasicInformation, size, bytes)
                   : m_process.QueryInformation(kProcessBasicInformation, size, bytes);
    return error == kErrorSuccess && LoadPointer(bytes, pointerSize, pointerSize, address);
  }

  // False unless at least so many bytes came.
  bool Read(uint64_t address, size_t size, size_t least, std::string& bytes) const {
    const SystemError error = IsAcross() ? m_process.ReadMemory64(address, size, bytes)
                                         : m_process.ReadMemory(address, size, bytes);
    return error == kErrorSuccess && bytes.size() >= least;
  }

  // A null pointer leads nowhere.
  static bool LoadPointer(std::string_view bytes, uint64_t offset, size_t size, uint64_t& pointer) {
    return LoadNumber(bytes, offset, size, ByteOrder::Little, pointer) && pointer != 0;
  }

 private:
  bool IsAcross() const { return m_isNarrowCaller && !m_isNarrowTarget; }

  CProcessHandle& m_process;
  const bool m_isNarrowCaller;
  const bool m_isNarrowTarget;
};

// The counted string at offset: its length in bytes, its room, and behind them its address.
bool ReadText(const CBlockAccess& access, std::string_view parameters, uint64_t offset,
              std::string& text) {
  constexpr size_t kTerminator = 2;
  const size_t pointerSize = access.Layout().pointerSize;
  uint16_t length = 0;
  if (!LoadLittle(parameters, offset, length)) return false;
  if (length == 0) return true;
  uint64_t address = 0;
  std::string bytes;
  if (!CBlockAccess::LoadPointer(parameters, offset + pointerSize, pointerSize, address) ||
      !access.Read(address, length + kTerminator, length, bytes)) {
    return false;
  }
  text = Utf8FromUtf16(bytes);
  text.resize(std::min(text.find('\0'), text.size()));
  return true;
}

void ReadTexts(const CBlockAccess& access, bool wantCommandLine, ProcessBlock& block) {
  const BlockLayout& layout = access.Layout();
  uint64_t address = 0;
  uint64_t parametersAddress = 0;
  std::string bytes;
  if (!access.FindBlock(address) || !access.Read(address + layout.parametersPointer,
                                                 layout.pointerSize, layout.pointerSize, bytes)) {
    return;
  }
  std::string parameters;
  if (!CBlockAccess::LoadPointer(bytes, 0, layout.pointerSize, parametersAddress) ||
      !access.Read(parametersAddress, layout.parametersSize, layout.leastParameters, parameters)) {
    return;
  }
  if (!ReadText(access, parameters, layout.imagePath, block.imagePath)) return;
  if (wantCommandLine && !ReadText(access, parameters, layout.commandLine, block.commandLine)) {
    return;
  }
  ReadText(access, parameters, layout.windowTitle, block.windowTitle);
}

// Whether it is a process of 32 bits on a system of 64. A system that cannot be asked is older than
// any process of the other width.
bool IsNarrowProcess(CProcessHandle& process, const BlockReader& reader) {
  bool isRedirected = false;
  return reader.isWideSystem && process.IsRedirected(isRedirected) == kErrorSuccess && isRedirected;
}

}  // namespace

ProcessBlock ReadProcessBlock(CProcessHandle& process, const BlockReader& reader,
                              bool wantCommandLine) {
  ProcessBlock block;
  block.isNarrow = IsNarrowProcess(process, reader);
  ReadTexts(CBlockAccess(process, reader, block.isNarrow), wantCommandLine, block);
  return block;
}

}  // namespace kestra
