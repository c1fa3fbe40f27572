#include "Modules/Files/FileChanges.h"

#include <memory>
#include <optional>

#include "Modules/Files/FileAttributes.h"
#include "Modules/Files/FilePaths.h"
#include "Modules/GivenText.h"
#include "VLib/src/paths/AbsolutePath.h"
#include "VLib/src/paths/ExpandPath.h"
#include "VLib/src/paths/RenameAtBoot.h"
#include "VLib/src/text/Text.h"
#include "VLib/src/threads/TerminationLook.h"
#include "VLib/src/version/FileSource.h"
#include "VLib/src/version/PeFile.h"
#include "platform/machine/FileSystem.h"

namespace kestra {
namespace {

std::optional<uint32_t> OptionsOf(const DiagParams& params) {
  const DiagParam* pParam = params.Find("Attributes", true);
  return pParam ? std::optional(pParam->DWordValue) : std::nullopt;
}

bool IsBlankOrDots(std::string_view name) {
  return TrimBlanks(name).empty() || name == "." || name == "..";
}

// One name, and no way into another directory.
bool IsName(const std::string& name, char separator) {
  return !IsBlankOrDots(name) && !HasSeparator(name, separator);
}

// A path that a statement gives, as the machine writes it.
bool ReadPath(CMachine& machine, const std::string& text, std::string& path,
              QueryMessage& message) {
  const char separator = machine.System().PathSeparator();
  const bool isForeign = separator == '\\' && text.find('/') != std::string::npos;
  // A path that is not absolute would mean another place for each host.
  if (TrimBlanks(text).empty() || isForeign || !ExpandPath(text, path, machine) ||
      !IsAbsolutePath(path, separator))
    return message.Fail(kErrorInvalidName);
  path = TrimSeparators(std::move(path), separator);
  return !IsBlankOrDots(LastPart(path, separator)) || message.Fail(kErrorInvalidName);
}

// The path that the properties name in a directory; an empty name stands where none is given.
bool BuildPath(CMachine& machine, const std::string& directory, const std::string* pName,
               const std::string* pPath, const char* nameProperty, std::string& path,
               QueryMessage& message) {
  const char separator = machine.System().PathSeparator();
  if (pName && !IsName(*pName, separator)) return message.Fail(kErrorInvalidName);
  if (pPath && !ReadPath(machine, *pPath, path, message)) return false;
  if (pName && pPath && LastPart(path, separator) != *pName) {
    message.RaiseMessage(11002, {nameProperty, "Path"});
    return false;
  }
  if (!pPath) {
    if (directory.empty()) {
      message.RaiseMessage(11000, {"Path"});
      return false;
    }
    path = JoinPath(directory, *pName, separator);
  }
  // The limit counts the end of the text.
  if (path.size() >= machine.System().MaxPath()) return message.Fail(kErrorFilenameExceedsRange);
  return true;
}

bool ReadNewPath(CMachine& machine, const std::string& directory, const DiagParams& params,
                 const char* nameProperty, std::string& path, QueryMessage& message) {
  const std::string* pName = GivenText(params, nameProperty);
  const std::string* pPath = GivenText(params, "Path");
  if (!pName && !pPath) {
    message.RaiseMessage(11000, {std::string(nameProperty) + " or Path"});
    return false;
  }
  return BuildPath(machine, directory, pName, pPath, nameProperty, path, message);
}

SystemError MakeNewFile(CFileSystem& files, const std::string& path, std::string_view content,
                        const os::CWaitable* pTermination) {
  constexpr size_t kMostAtOnce = 1 << 20;
  CTerminationLook termination(pTermination);
  std::unique_ptr<CFileWriter> writer;
  SystemError error =
      files.BeginWrite(path, LastLink::Refuse, Existing::Refuse, NewRights::Usual, writer);
  while (error == kErrorSuccess && !content.empty()) {
    if (termination.IsOverNow()) return kErrorCancelled;
    const std::string_view piece = content.substr(0, kMostAtOnce);
    error = writer->Write(piece);
    content.remove_prefix(piece.size());
  }
  return error == kErrorSuccess ? writer->Commit() : error;
}

// What is new has the attributes that it came with, and these.
SystemError GiveAttributes(CFileSystem& files, const std::string& path, uint32_t options) {
  if (options & kCompressedOption) return kErrorNotSupported;
  if (options == 0) return kErrorSuccess;
  FileInfo info;
  const SystemError error = files.Info(path, info);
  if (error != kErrorSuccess) return error;
  return files.SetAttributes(path, info.attributes | SettableAttributes(options));
}

SystemError ChangeAttributes(CFileSystem& files, const std::string& path, const FileInfo& info,
                             uint32_t options) {
  const uint32_t all = SettableAttributes(kReadOnlyOption | kHiddenOption | kSystemOption);
  const uint32_t changed = AttributeOptions(info.attributes) ^ options;
  if (changed & kCompressedOption) return kErrorNotSupported;
  if (changed == 0) return kErrorSuccess;
  return files.SetAttributes(path, (info.attributes & ~all) | SettableAttributes(options));
}

SystemError FindListed(CFileSystem& files, const ListedFile& file, FileInfo& info) {
  const SystemError error = files.Info(file.path, info);
  if (error != kErrorSuccess) return error;
  return file.info && IsAnotherFile(*file.info, info) ? kErrorFileNotFound : kErrorSuccess;
}

// Where the content of a new file comes from: a file, or a resource of one that is a program.
// Without a source it is empty.
struct Origin {
  std::string source{};
  const std::string* pResName = nullptr;  // null for the whole file, as the next one
  const std::string* pResType = nullptr;
};

bool ReadOrigin(CMachine& machine, const DiagParams& params, Origin& origin,
                QueryMessage& message) {
  const std::string* pSource = GivenText(params, "Source");
  origin.pResName = GivenText(params, "ResName");
  origin.pResType = GivenText(params, "ResType");
  const bool wantsResource = origin.pResName || origin.pResType;
  const char* pMissing = nullptr;
  if (wantsResource && !pSource) pMissing = "Source";
  if (wantsResource && !origin.pResName) pMissing = "ResName";
  if (wantsResource && !origin.pResType) pMissing = "ResType";
  if (pMissing) {
    message.RaiseMessage(11000, {pMissing});
    return false;
  }
  if (!pSource) return true;
  if (pSource->empty() || !ExpandPath(*pSource, origin.source, machine) ||
      !IsAbsolutePath(origin.source, machine.System().PathSeparator()))
    return message.Fail(kErrorInvalidName);
  return true;
}

SystemError MakeFile(CFileSystem& files, const std::string& path, const Origin& origin,
                     const QueryMessage& message) {
  if (origin.source.empty()) return MakeNewFile(files, path, {}, nullptr);
  if (!origin.pResName) return files.CopyPlainFile(origin.source, path, message.TerminationEvent());
  std::unique_ptr<CFileReader> reader;
  SystemError error = files.OpenFile(origin.source, LastLink::Follow, reader);
  if (error != kErrorSuccess) return error;
  CFileSource source(*reader, message.TerminationEvent());
  std::string content;
  error = ReadResource(source, *origin.pResType, *origin.pResName, content);
  return error == kErrorSuccess ? MakeNewFile(files, path, content, message.TerminationEvent())
                                : error;
}

}  // namespace

bool AddFile(CMachine& machine, const std::string& directory, const DiagParams& params,
             QueryMessage& message) {
  std::string path;
  Origin origin;
  if (!ReadNewPath(machine, directory, params, "FileName", path, message) ||
      !ReadOrigin(machine, params, origin, message))
    return false;
  CFileSystem* pFiles = machine.Files();
  if (!pFiles) return message.Fail(kErrorCallNotImplemented);
  SystemError error = MakeFile(*pFiles, path, origin, message);
  if (error != kErrorSuccess) return message.Fail(error);
  error = GiveAttributes(*pFiles, path, OptionsOf(params).value_or(0));
  if (error == kErrorSuccess) return true;
  pFiles->RemoveFile(path);
  return message.Fail(error);
}

bool AddDirectory(CMachine& machine, const std::string& directory, const DiagParams& params,
                  QueryMessage& message) {
  std::string path;
  if (!ReadNewPath(machine, directory, params, "Name", path, message)) return false;
  CFileSystem* pFiles = machine.Files();
  if (!pFiles || GivenText(params, "Source")) return message.Fail(kErrorCallNotImplemented);
  SystemError error = pFiles->MakeDirectory(path, NewRights::Usual);
  if (error != kErrorSuccess) return message.Fail(error);
  error = GiveAttributes(*pFiles, path, OptionsOf(params).value_or(0));
  if (error == kErrorSuccess) return true;
  pFiles->RemoveEmptyDirectory(path);
  return message.Fail(error);
}

bool UpdateFile(CMachine& machine, const ListedFile& file, const char* nameProperty,
                const DiagParams& params, QueryMessage& message) {
  const std::string* pName = GivenText(params, nameProperty);
  const std::string* pPath = GivenText(params, "Path");
  const std::string directory = ParentPath(file.path, machine.System().PathSeparator());
  std::string target = file.path;
  // A relative path of one part has no directory to name.
  const bool isBare = directory.empty() && pName && !pPath;
  if (isBare && !IsName(*pName, machine.System().PathSeparator()))
    return message.Fail(kErrorInvalidName);
  if (isBare) target = *pName;
  if ((pName || pPath) && !isBare &&
      !BuildPath(machine, directory, pName, pPath, nameProperty, target, message))
    return false;
  CFileSystem* pFiles = machine.Files();
  if (!pFiles) return message.Fail(kErrorCallNotImplemented);
  FileInfo info;
  SystemError error = FindListed(*pFiles, file, info);
  // First what can be taken back exactly.
  if (error == kErrorSuccess && target != file.path) error = pFiles->Rename(file.path, target);
  if (error != kErrorSuccess) return message.Fail(error);
  const std::optional<uint32_t> options = OptionsOf(params);
  if (options) error = ChangeAttributes(*pFiles, target, info, *options);
  if (error == kErrorSuccess) return true;
  if (target != file.path) pFiles->Rename(target, file.path);
  return message.Fail(error);
}

bool DeleteListedFile(CMachine& machine, const ListedFile& file, QueryMessage& message) {
  CFileSystem* pFiles = machine.Files();
  if (!pFiles) return message.Fail(kErrorCallNotImplemented);
  FileInfo info;
  SystemError error = FindListed(*pFiles, file, info);
  if (error == kErrorSuccess) error = pFiles->RemoveFile(file.path);
  if (error == kErrorSuccess) return true;
  const bool isInUse = error == kErrorSharingViolation;
  if (isInUse &&
      RenameAtBoot(machine, file.path, std::string(), message.TerminationEvent()) == kErrorSuccess)
    return message.Restart = true;
  return message.Fail(error);
}

bool DeleteListedDirectory(CMachine& machine, const ListedFile& directory, QueryMessage& message) {
  CFileSystem* pFiles = machine.Files();
  if (!pFiles) return message.Fail(kErrorCallNotImplemented);
  FileInfo info;
  SystemError error = FindListed(*pFiles, directory, info);
  if (error == kErrorSuccess)
    error = info.kind == FileKind::Link ? pFiles->RemoveFile(directory.path)
                                        : pFiles->RemoveEmptyDirectory(directory.path);
  return error == kErrorSuccess || message.Fail(error);
}

}  // namespace kestra
