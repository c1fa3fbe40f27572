// A key of the volume's registry: where it lies in the files, and what is special about its place.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/image/registry/tree/RegistryFile.h"

namespace kestra::image {

// Places below which something is to be found that no file has there, or in which the view of
// 32-bit programs is another one.
enum class Zone {
  Plain,
  Machine,         // HKEY_LOCAL_MACHINE
  Users,           // HKEY_USERS
  System,          // HKEY_LOCAL_MACHINE\SYSTEM
  Software,        // HKEY_LOCAL_MACHINE\SOFTWARE
  SoftwareNarrow,  // the same in the 32-bit view, that is, its Wow6432Node
  User,            // HKEY_USERS\SID
  UserSoftware,    // HKEY_USERS\SID\Software
  Classes,         // HKEY_CLASSES_ROOT, HKEY_LOCAL_MACHINE\SOFTWARE\Classes and a user's classes
};

// A key of one file. The file's Load has succeeded.
struct KeyLayer {
  CRegistryFile* pFile = nullptr;
  TreeId key = 0;
};

struct VolumeNode {
  Zone zone = Zone::Plain;
  // The keys that make it up, those before hiding those behind. None where everything below is
  // brought in from elsewhere.
  std::vector<KeyLayer> layers{};
  std::string sid{};  // in the zones User and UserSoftware
};

// Loads the file and gives its root.
SystemError RootNode(CRegistryFile& file, Zone zone, VolumeNode& node);
// The subkey in the layers of the node, of the zone Plain. The next ones answer kErrorCancelled
// when the thread's work is terminated. A layer that cannot be read counts only if no other has the
// key.
SystemError FindChild(const VolumeNode& node, std::string_view name, VolumeNode& child);
SystemError FindValue(const VolumeNode& node, std::string_view name, uint32_t& type,
                      std::string& data);
// The text of a value of a text type, up to its first NUL.
SystemError FindText(const VolumeNode& node, std::string_view name, std::string& text);
SystemError FindNumber(const VolumeNode& node, std::string_view name, uint32_t& number);

}  // namespace kestra::image
