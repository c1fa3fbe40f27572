// A Windows system that is not running, as a machine to ask: its volume lies in a directory, such
// as where a disk is mounted, or is a prefix of Wine.
//
//   image::ImageOptions options{.directory = "/mnt/disk", .notice = ...};
//   Ref<CMachine> machine;
//   std::string refusal;
//   if (!image::OpenImage(options, machine, refusal)) ...tell refusal...
//
// The machine has files and a registry, and both are only read: every change fails with
// kErrorWriteProtect. It has nothing that only a running system has. What it answers comes from
// the directory alone; nothing of this machine shows.
#pragma once

#include <string>

#include "platform/image/registry/VolumeRegistry.h"
#include "platform/machine/Machine.h"

namespace kestra::image {

struct ImageOptions {
  // Holds Windows\System32\config (the Windows folder may have any name), or is a prefix of Wine
  // (system.reg beside drive_c), or the drive_c of one. Any path of this machine.
  std::string directory;
  std::string userName{};  // whose HKCU is; empty: the only user there is
  Notice notice{};
};

// False, with a sentence that says why, for a directory that cannot be opened or holds no Windows
// system, and for a userName that is none of its users. The hives themselves are read when they
// are first needed, unless a user is named.
bool OpenImage(const ImageOptions& options, Ref<CMachine>& machine, std::string& refusal);

}  // namespace kestra::image
