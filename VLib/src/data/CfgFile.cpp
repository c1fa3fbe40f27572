// The road between a tree and a file: reading and saving.

#include <algorithm>
#include <exception>
#include <limits>

#include "VLib/src/data/CfgLayers.h"
#include "VLib/src/data/CfgNode.h"
#include "VLib/src/data/CfgReader.h"
#include "VLib/src/data/CfgWriter.h"

namespace kestra {
namespace {

constexpr size_t kPiece = 1 << 20;  // read or written at once, between two looks
// What the 32 bits of the compression header can count.
constexpr uint64_t kLargestFile = std::numeric_limits<uint32_t>::max();

bool ReadWholeFile(CFileReader& reader, CTerminationLook& termination, FileInfo& info,
                   std::string& bytes) {
  if (reader.Info(info) != kErrorSuccess) return false;
  if (info.size == 0 || info.size > kLargestFile) return false;
  const auto size = static_cast<size_t>(info.size);
  while (bytes.size() < size) {
    const size_t before = bytes.size();
    if (termination.IsOverNow()) return false;
    if (reader.Read(std::min(kPiece, size - before), bytes) != kErrorSuccess) return false;
    if (bytes.size() == before) return false;  // it has become shorter
  }
  return true;
}

bool WriteWholeFile(CFileSystem& files, const std::string& path, std::string_view bytes,
                    CTerminationLook& termination) {
  std::unique_ptr<CFileWriter> writer;
  if (files.BeginWrite(path, LastLink::Follow, Existing::Replace, NewRights::Usual, writer) !=
      kErrorSuccess)
    return false;
  while (!bytes.empty()) {
    if (termination.IsOverNow()) return false;
    const std::string_view piece = bytes.substr(0, kPiece);
    if (writer->Write(piece) != kErrorSuccess) return false;
    bytes.remove_prefix(piece.size());
  }
  return !termination.IsOverNow() && writer->Commit() == kErrorSuccess;
}

// Of the file that the path stands for, through a link too; 0 if there is none.
FileTime WriteTimeOf(CFileSystem& files, const std::string& path) {
  FileInfo info;
  if (files.Info(path, info) != kErrorSuccess) return {};
  if (info.kind != FileKind::Link) return info.lastWriteTime;
  std::unique_ptr<CFileReader> reader;
  if (files.OpenFile(path, LastLink::Follow, reader) != kErrorSuccess) return {};
  return reader->Info(info) == kErrorSuccess ? info.lastWriteTime : FileTime{};
}

Ref<CfgFileInfo> MakeFileInfo(const std::string& path, FileTime lastWrite) {
  auto info = MakeRef<CfgFileInfo>();
  info->Path = path;
  info->LastWrite = lastWrite;
  return info;
}

// Every load and save answers with a bool, also when the memory is not there.
template <class Operation>
bool Guarded(Operation operation) {
  try {
    return operation();
  } catch (const std::exception&) {
    return false;
  }
}

bool LoadWithLook(CfgNode& node, std::string& bytes, std::string_view sectionPath, CfgMode mode,
                  uint32_t key, CfgLayout layout, CTerminationLook& termination) {
  return !bytes.empty() && !HasUtf16Mark(bytes) && DecodeCfgLayers(bytes, key, termination) &&
         ReadCfgText(node, bytes, sectionPath, mode, 0, layout, termination);
}

}  // namespace

bool CfgNode::LoadFile(CFileSystem& files, const std::string& path, std::string_view sectionPath,
                       CfgMode mode, uint32_t key, CfgLayout layout,
                       const os::CWaitable* pTermination) {
  return Guarded([&] {
    CTerminationLook termination(pTermination);
    std::unique_ptr<CFileReader> reader;
    if (files.OpenFile(path, LastLink::Follow, reader) != kErrorSuccess) return false;
    FileInfo info;
    std::string bytes;
    if (!ReadWholeFile(*reader, termination, info, bytes)) return false;
    Ref<CfgFileInfo> file = MakeFileInfo(path, info.lastWriteTime);
    if (!LoadWithLook(*this, bytes, sectionPath, mode, key, layout, termination)) return false;
    File = std::move(file);
    return true;
  });
}

bool CfgNode::LoadBytes(std::string bytes, std::string_view sectionPath, CfgMode mode, uint32_t key,
                        CfgLayout layout, const os::CWaitable* pTermination) {
  return Guarded([&] {
    CTerminationLook termination(pTermination);
    return !termination.IsOverNow() &&
           LoadWithLook(*this, bytes, sectionPath, mode, key, layout, termination);
  });
}

bool CfgNode::LoadText(std::string_view text, uint32_t quoteFlags, CfgLayout layout,
                       const os::CWaitable* pTermination) {
  return Guarded([&] {
    CTerminationLook termination(pTermination);
    return !termination.IsOverNow() &&
           ReadCfgText(*this, text, {}, CfgMode::All, quoteFlags, layout, termination);
  });
}

bool CfgNode::SaveFile(CFileSystem& files, const std::string& path, uint32_t key, bool compress,
                       CfgLayout layout, const os::CWaitable* pTermination) {
  return Guarded([&] {
    File = MakeFileInfo(path, WriteTimeOf(files, path));
    return Save(files, key, compress, layout, pTermination);
  });
}

bool CfgNode::Save(CFileSystem& files, uint32_t key, bool compress, CfgLayout layout,
                   const os::CWaitable* pTermination) {
  if (!File || (compress && key == 0)) return false;
  return Guarded([&] {
    CTerminationLook termination(pTermination);
    std::string text;
    std::string bytes;
    if (!WriteCfgText(*this, 0, 0, layout, termination, text)) return false;
    if (text.size() > kLargestFile) return false;
    if (!EncodeCfgLayers(text, key, compress, termination, bytes)) return false;
    if (!WriteWholeFile(files, File->Path, bytes, termination)) return false;
    File->LastWrite = WriteTimeOf(files, File->Path);
    return true;
  });
}

}  // namespace kestra
