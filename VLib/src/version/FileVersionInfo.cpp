#include "VLib/src/version/FileVersionInfo.h"

#include <fmt/format.h>

#include <algorithm>
#include <memory>

#include "VLib/src/text/Text.h"
#include "VLib/src/version/FileSource.h"
#include "VLib/src/version/PeFile.h"
#include "VLib/src/version/VersionBlock.h"
#include "platform/machine/FileSystem.h"

namespace kestra {
SystemError FileVersionInfo::Load(CMachine& machine, const std::string& path,
                                  const os::CWaitable* pTermination) {
  m_block.clear();
  CFileSystem* pFiles = machine.Files();
  if (!pFiles) return kErrorCallNotImplemented;
  std::unique_ptr<CFileReader> reader;
  SystemError error = pFiles->OpenFile(path, LastLink::Follow, reader);
  if (error != kErrorSuccess) return error;
  CFileSource source(*reader, pTermination);
  error = ReadVersionResource(source, m_block);
  if (error == kErrorSuccess && m_block.empty()) return kErrorResourceTypeNotFound;
  return error;
}

std::optional<std::string> FileVersionInfo::GetString(std::string_view name) const {
  const CVersionBlock block(m_block);
  if (auto text = block.FindText(name)) return text;
  const auto translation = block.FirstTranslation();
  if (!translation) return std::nullopt;
  return block.FindText(fmt::format("\\StringFileInfo\\{:08x}\\{}", *translation, name));
}

std::optional<std::string> FileVersionInfo::GetFixedVersion(uint32_t which) const {
  const auto fixed = CVersionBlock(m_block).Fixed();
  if (!fixed || (which != kProduct && which != kFile)) return std::nullopt;
  const auto& parts = which == kProduct ? fixed->product : fixed->file;
  return fmt::format("{}.{}.{}.{}", parts[0], parts[1], parts[2], parts[3]);
}

std::string FileVersionInfo::GetVersionText(uint32_t which) const {
  const auto fixed = GetFixedVersion(which);
  if (fixed && *fixed != "0.0.0.0") return *fixed;
  const auto text = GetString(which == kProduct ? "ProductVersion" : "FileVersion");
  return text ? std::string(TrimBlanks(*text)) : std::string();
}

}  // namespace kestra
