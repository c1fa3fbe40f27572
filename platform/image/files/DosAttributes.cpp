#include "platform/image/files/DosAttributes.h"

#include <sys/types.h>
#include <sys/xattr.h>

#include <charconv>
#include <string_view>

#include "platform/base/ByteSource.h"

namespace kestra::image {
namespace {

// A text such as "0x22".
uint32_t ParseWineAttributes(std::string_view text) {
  if (!text.starts_with("0x")) return 0;
  uint32_t attributes = 0;
  const auto end = text.data() + text.size();
  return std::from_chars(text.data() + 2, end, attributes, 16).ec == std::errc() ? attributes : 0;
}

}  // namespace

uint32_t ReadDosAttributes(int directory, const std::string& name) {
  // There is no getxattrat; this is the same entry of the same directory (proc(5)).
  const std::string path = "/proc/self/fd/" + std::to_string(directory) + "/" + name;
  char buffer[16] = {};
  ssize_t size = lgetxattr(path.c_str(), "system.ntfs_attrib", buffer, sizeof buffer);
  uint32_t attributes = 0;
  if (size == sizeof attributes) {
    LoadLittle(std::string_view(buffer, sizeof attributes), 0, attributes);
    return attributes;
  }
  size = lgetxattr(path.c_str(), "user.DOSATTRIB", buffer, sizeof buffer);
  return size > 0 ? ParseWineAttributes({buffer, static_cast<size_t>(size)}) : 0;
}

}  // namespace kestra::image
