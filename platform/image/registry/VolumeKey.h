// An open key of a volume's registry.
#pragma once

#include <memory>

#include "platform/image/registry/layout/VolumeLayout.h"
#include "platform/machine/Registry.h"

namespace kestra::image {

// The layout and all that the node leads to live as long as a key does.
std::unique_ptr<CRegistryKey> MakeVolumeKey(std::shared_ptr<CVolumeLayout> layout, VolumeNode node);

}  // namespace kestra::image
