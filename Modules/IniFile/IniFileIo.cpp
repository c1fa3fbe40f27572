#include "Modules/IniFile/IniFileIo.h"

#include <algorithm>

#include "VLib/src/data/edit/CfgEdit.h"

namespace kestra {
namespace {

constexpr size_t kPiece = 1 << 20;  // read or written at once, between two looks

bool IsGone(SystemError error) {
  return error == kErrorFileNotFound || error == kErrorPathNotFound;
}

SystemError ReadAll(CFileReader& reader, size_t size, CTerminationLook& termination,
                    std::string& bytes) {
  while (bytes.size() < size) {
    if (termination.IsOverNow()) return kErrorCancelled;
    const size_t before = bytes.size();
    const SystemError error = reader.Read(std::min(kPiece, size - before), bytes);
    if (error != kErrorSuccess) return error;
    if (bytes.size() == before) return kErrorSharingViolation;
  }
  return kErrorSuccess;
}

}  // namespace

SystemError ReadIniFile(CFileSystem& files, const std::string& path, CTerminationLook& termination,
                        IniContent& content) {
  SystemError error = files.OpenFile(path, LastLink::Follow, content.reader);
  if (IsGone(error)) return kErrorSuccess;
  FileInfo info;
  if (error == kErrorSuccess) error = content.reader->Info(info);
  if (error != kErrorSuccess) return error;
  if (info.size > kCfgMostBytes) return kErrorFileTooLarge;
  content.info = info;
  return ReadAll(*content.reader, static_cast<size_t>(info.size), termination, content.bytes);
}

SystemError WriteIniFile(CFileSystem& files, const std::string& path, const IniContent& read,
                         std::string_view bytes, CTerminationLook& termination) {
  std::unique_ptr<CFileWriter> writer;
  const Existing existing = read.info ? Existing::Replace : Existing::Refuse;
  SystemError error = files.BeginWrite(path, LastLink::Follow, existing, NewRights::Usual, writer);
  if (error == kErrorSuccess && read.info) writer->ExpectUnchanged(*read.info);
  while (error == kErrorSuccess && !bytes.empty()) {
    if (termination.IsOverNow()) return kErrorCancelled;
    const std::string_view piece = bytes.substr(0, kPiece);
    error = writer->Write(piece);
    bytes.remove_prefix(piece.size());
  }
  if (error == kErrorSuccess) error = termination.IsOverNow() ? kErrorCancelled : writer->Commit();
  return error == kErrorFileExists && !read.info ? kErrorSharingViolation : error;
}

}  // namespace kestra
