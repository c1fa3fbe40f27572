// The registry of a Windows system that is not running: out of its hive files, or out of the text
// files of a Wine prefix. It is read and never written: every change answers kErrorWriteProtect.
//
// Nothing is read before the first key of a hive is opened, and each file is read once, whole, into
// memory, through a reader that the caller gives. What is missing is kErrorFileNotFound; what is
// there and cannot be read is another error, and a notice says so.
//
// The tree is the one that the running system shows:
// - HKLM: SOFTWARE, SYSTEM, SAM and SECURITY. SYSTEM has "CurrentControlSet", which is the control
//   set that Select\Current numbers. Symbolic links (REG_LINK in "SymbolicLinkValue") are followed.
// - HKU: ".DEFAULT", and each user's hive under its SID, its classes under SID_Classes; S-1-5-18 is
//   ".DEFAULT" again. HKU\SID\Software\Classes is the same as SID_Classes.
// - HKCU: the user's own of HKU. HKCR: HKLM\Software\Classes, with the user's classes over it.
// - HKCC: the current hardware profile of SYSTEM.
// HKU lists everybody whose hive is there, loaded or not when the system ran. Keys and values that
// a running system keeps in memory alone (HKLM\HARDWARE, say) are not there.
// On a system of 64 bits kKeyWow64Key32 leads below "Wow6432Node" where the running system does,
// and opens without a view flag or with kKeyWow64Key64 do not.
//
// A Wine prefix shows what Wine 8 shows: HKLM is system.reg, HKU has ".Default" and the one user,
// the control set is no link, and the 32-bit view leads into every "Wow6432Node" and nowhere else;
// from HKCR, which is listed whole, only where that has the key.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "platform/machine/FileSystem.h"
#include "platform/machine/Registry.h"

namespace kestra::image {

// A user of the volume who has, or had, a profile there.
struct VolumeUser {
  std::string sid;          // "S-1-5-21-..."
  std::string name;         // the last part of the profile's folder
  std::string profilePath;  // "C:\Users\alice", tokens expanded
};

// What the person who asks must know of the volume: a hive that is dirty, damaged or missing. A
// sentence without line end. Called from any thread, once per fact.
using Notice = std::function<void(const std::string&)>;

// Opens a file of the registry for reading. For hives the name is a path of the volume
// ("C:\Windows\System32\config\SOFTWARE"), for a Wine prefix "system.reg", "user.reg" or
// "userdef.reg". Any thread.
using OpenRegistryFile =
    std::function<SystemError(const std::string& name, std::unique_ptr<CFileReader>& reader)>;

// All methods may be called from any thread.
class CVolumeRegistry : public CRegistry {
 public:
  // 64 bits wide: there are two views.
  virtual bool IsWide() = 0;
  // Who has a profile, ordered by name: people, not the accounts that services run under. An error
  // when the list cannot be read.
  virtual SystemError Users(std::vector<VolumeUser>& users) = 0;
  // Whose HKCU is: the user that was named, or the only one. kErrorNoSuchUser otherwise, with a
  // notice that lists them.
  virtual SystemError CurrentUser(VolumeUser& user) = 0;
};

struct VolumeRegistryOptions {
  std::string userName{};  // or a SID, in any case; empty: the only user there is
  Notice notice{};
};

// windowsFolder as in "C:\Windows".
std::unique_ptr<CVolumeRegistry> MakeHiveRegistry(OpenRegistryFile open,
                                                  const std::string& windowsFolder,
                                                  VolumeRegistryOptions options);
std::unique_ptr<CVolumeRegistry> MakeTextRegistry(OpenRegistryFile open,
                                                  VolumeRegistryOptions options);

}  // namespace kestra::image
