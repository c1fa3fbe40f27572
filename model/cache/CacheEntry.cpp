// One entry of the cache: a filled module as a file.
//
// The file is the module's dump in sections, below one comment line with the length and checksum of
// what follows, and with how much could not be read when it was made. The checksum also covers
// these numbers and the key of the entry. So a file that was cut off at the end of a line, or that
// another key's entry left under this name, is told from one that is whole.
#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "VLib/src/data/Checksum.h"
#include "model/cache/ResultCache.h"
#include "model/cache/SameContent.h"
#include "model/dump/Dump.h"
#include "model/stored/StoredItem.h"
#include "platform/machine/FileSystem.h"
#include "platform/os/Clock.h"

namespace kestra {
namespace {

constexpr uint64_t kTicksPerSecond = 10'000'000;
constexpr int kFromCacheFile = 2;  // what GetFillSource answers

constexpr std::string_view kHead = "; kestra ";

std::string HeadLine(const std::string& key, const CFillNotes::Counts& problems,
                     std::string_view dump) {
  const std::string numbers =
      fmt::format("{} {} {}", problems.all, problems.hidingItems, dump.size());
  return fmt::format("{}{} {:08x}\r\n", kHead, numbers,
                     Checksum(dump, Checksum(numbers, Checksum(key))));
}

// The first number of a text, which is taken off it with what stands before it; 0 for none.
uint64_t TakeNumber(std::string_view& text) {
  text.remove_prefix(std::min(text.find_first_of("0123456789"), text.size()));
  uint64_t number = 0;
  const auto read = std::from_chars(text.data(), text.data() + text.size(), number);
  text.remove_prefix(static_cast<size_t>(read.ptr - text.data()));
  return number;
}

// The sections behind a head line that fits them.
bool TakeHeadLine(std::string& bytes, const std::string& key, CFillNotes::Counts& problems) {
  const size_t end = bytes.find('\n');
  if (end == std::string::npos) return false;
  const std::string_view line = std::string_view(bytes).substr(0, end + 1);
  std::string_view numbers = line;
  problems.all = TakeNumber(numbers);
  problems.hidingItems = TakeNumber(numbers);
  if (line != HeadLine(key, problems, std::string_view(bytes).substr(end + 1))) return false;
  bytes.erase(0, end + 1);
  return true;
}

bool LoadModule(const std::string& dump, CVDiagItem& module, QueryMessage& message) {
  CfgNode file;
  if (!file.LoadText(dump, 0, CfgLayout::Cfg, message.TerminationEvent())) return false;
  if (file.Children.size() != 1 || file.Children.front()->Name != module.GetName()) return false;
  return LoadFromNode(module, *file.Children.front(), kFromCacheFile, message);
}

// A line end in a value, a blank that is trimmed, an item of no class: such a dump is not kept.
bool ReadsBack(const std::string& dump, DiagModule& module, QueryMessage& message) {
  const auto copy = MakeRef<StoredItem>(module.GetTypeInfo(), kFromCacheFile);
  return LoadModule(dump, *copy, message) && IsSameContent(module, *copy, message);
}

// Whether a file that was written then is good enough now.
bool IsFresh(FileTime written, std::optional<int32_t> timeToLive) {
  if (!timeToLive) return true;
  const uint64_t age = static_cast<uint64_t>(*timeToLive) * kTicksPerSecond;
  return written.ticks + age >= os::SystemTimeAsFileTime().ticks;
}

}  // namespace

bool ResultCache::ReadFile(const std::string& path, std::optional<int32_t> timeToLive,
                           std::string& bytes, QueryMessage& message, FileTime* pWritten) {
  constexpr size_t kChunk = 1 << 20;
  std::unique_ptr<CFileReader> reader;
  FileInfo info;
  if (Files().OpenFile(path, LastLink::Refuse, reader) != kErrorSuccess) return false;
  if (reader->Info(info) != kErrorSuccess || !info.isTrusted) return false;
  if (!IsFresh(info.lastWriteTime, timeToLive)) return false;
  if (pWritten) *pWritten = info.lastWriteTime;
  for (size_t before = 0;;) {
    if (message.IsTerminated() || reader->Read(kChunk, bytes) != kErrorSuccess) return false;
    if (bytes.size() == before) return true;
    if (bytes.size() > info.size) return false;  // it grows while we read
    before = bytes.size();
  }
}

bool ResultCache::ReadEntry(Entry& entry, int32_t timeToLive, DiagModule& module,
                            QueryMessage& message) {
  std::string bytes;
  return ReadFile(entry.path, timeToLive, bytes, message, &entry.written) &&
         TakeHeadLine(bytes, entry.key, entry.problems) && LoadModule(bytes, module, message);
}

bool ResultCache::WriteFile(const std::string& path, std::string_view bytes) {
  std::unique_ptr<CFileWriter> writer;
  SystemError error =
      Files().BeginWrite(path, LastLink::Refuse, Existing::Replace, NewRights::OwnerOnly, writer);
  if (error == kErrorAccessDenied && Files().RemoveFile(path) == kErrorSuccess) {
    // Ours, but not to be written any more.
    error =
        Files().BeginWrite(path, LastLink::Refuse, Existing::Replace, NewRights::OwnerOnly, writer);
  }
  if (error != kErrorSuccess || writer->Write(bytes) != kErrorSuccess) return false;
  if (writer->Commit() != kErrorSuccess) return false;
  if (m_hasAcls) Files().GrantEveryone(path);
  return true;
}

bool ResultCache::WriteEntry(const Entry& entry, DiagModule& module, QueryMessage& message) {
  std::string dump;
  Dump(module, dump, message, DumpFormat::Sections);
  if (message.IsTerminated() || !ReadsBack(dump, module, message)) return false;
  const CFillNotes::Counts problems{module.ProblemCount, module.HidingCount};
  return WriteFile(entry.path, HeadLine(entry.key, problems, dump) + dump);
}

}  // namespace kestra
