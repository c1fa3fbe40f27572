#include "Modules/Files/FileAttributes.h"

#include "VLib/src/time/Datime.h"
#include "platform/machine/FileSystem.h"

namespace kestra {

uint32_t AttributeOptions(uint32_t attributes) {
  uint32_t options = 0;
  if (attributes & kFileAttributeReadOnly) options |= kReadOnlyOption;
  if (attributes & kFileAttributeHidden) options |= kHiddenOption;
  if (attributes & kFileAttributeSystem) options |= kSystemOption;
  if (attributes & kFileAttributeCompressed) options |= kCompressedOption;
  return options;
}

uint32_t SettableAttributes(uint32_t options) {
  uint32_t attributes = 0;
  if (options & kReadOnlyOption) attributes |= kFileAttributeReadOnly;
  if (options & kHiddenOption) attributes |= kFileAttributeHidden;
  if (options & kSystemOption) attributes |= kFileAttributeSystem;
  return attributes;
}

std::optional<uint32_t> KnownTime(FileTime time) {
  return time.ticks == 0 ? std::nullopt : DatimeFromFileTime(time);
}

void SetTimeIfKnown(DiagParams& params, const DiagParamDef* pDef, FileTime time) {
  if (const auto datime = KnownTime(time)) params.Set(MakeRef<DiagParam>(pDef, *datime), false);
}

}  // namespace kestra
