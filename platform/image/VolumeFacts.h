// Facility "system facts" of a volume: what its registry and its folders say of the system that
// lives on it. Nothing of the machine that we run on.
#pragma once

#include <memory>
#include <string>

#include "platform/image/registry/VolumeRegistry.h"
#include "platform/machine/SystemFacts.h"

namespace kestra::image {

// windowsFolder as in "C:\Windows". registry outlives the object. The folders of the user, and
// those for all users, are left to who reads the registry.
std::unique_ptr<CSystemFacts> MakeVolumeFacts(CVolumeRegistry& registry, std::string windowsFolder);

}  // namespace kestra::image
