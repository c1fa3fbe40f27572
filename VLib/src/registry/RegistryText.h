// A single value of the machine's registry, for callers to whom every way of not having it is the
// same.
#pragma once

#include <optional>
#include <string>

#include "platform/machine/Machine.h"
#include "platform/machine/Registry.h"

namespace kestra {

// A text, or a number in decimal digits. Nothing for a machine without registry, for a key or value
// that is not there or may not be read, for a value of another type and for an empty text. view is
// kKeyWow64Key32, kKeyWow64Key64 or 0.
std::optional<std::string> ReadRegistryText(CMachine& machine, RegistryRoot root,
                                            const std::string& path, const std::string& name,
                                            uint32_t view = 0);

}  // namespace kestra
