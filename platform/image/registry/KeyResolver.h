// Finds keys by their paths: through what is brought in from elsewhere, symbolic links and the two
// views.
#pragma once

#include <string_view>

#include "platform/image/registry/layout/VolumeLayout.h"

namespace kestra::image {

// What a symbolic link in a path's last place stands for: the key that it leads to, or itself.
enum class LastKey { FollowLink, KeepLink };

// The key at a path below start; empty: start itself. isNarrow: in the view of 32-bit programs.
// kErrorFileNotFound if it is not there, kErrorCannotResolveFilename for links that go round in
// circles, kErrorInvalidName for a path that is deeper than a registry can be.
SystemError ResolveKey(CVolumeLayout& layout, const VolumeNode& start, std::string_view path,
                       bool isNarrow, VolumeNode& node, LastKey lastKey = LastKey::FollowLink);

}  // namespace kestra::image
