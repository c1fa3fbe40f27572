#include "platform/image/registry/tree/KeyTree.h"

#include "platform/base/text/Utf16.h"
#include "platform/machine/Registry.h"

namespace kestra::image {

std::string DataFromStored(uint32_t type, std::string_view bytes) {
  const bool isText = type == kRegSz || type == kRegExpandSz || type == kRegMultiSz;
  return isText ? Utf8FromUtf16(bytes) : std::string(bytes);
}

}  // namespace kestra::image
