// The property Attributes, and the attribute word of the machine.
#pragma once

#include <cstdint>
#include <optional>

#include "model/items/Param.h"
#include "platform/base/FileTime.h"

namespace kestra {

inline constexpr uint32_t kReadOnlyOption = 1u << 0;
inline constexpr uint32_t kHiddenOption = 1u << 1;
inline constexpr uint32_t kSystemOption = 1u << 2;
inline constexpr uint32_t kCompressedOption = 1u << 3;

// From the attribute word to the options of Attributes; all else is left out.
uint32_t AttributeOptions(uint32_t attributes);
// The bits that stand for the options and can be set.
uint32_t SettableAttributes(uint32_t options);

// Nothing for a time that is not known, or that 32 bits of seconds do not hold.
std::optional<uint32_t> KnownTime(FileTime time);
// A time that is not known, or that 32 bits of seconds do not hold, sets nothing.
void SetTimeIfKnown(DiagParams& params, const DiagParamDef* pDef, FileTime time);

}  // namespace kestra
