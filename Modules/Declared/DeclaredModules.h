// Modules whose class tree, arguments and actions are declared, and nothing else yet: they have no
// properties and fill to nothing. Grouped by theme, one file each; a module moves to a folder of
// its own when it is built.
#pragma once

#include "model/classes/Class.h"

namespace kestra {

// Hardware.cpp
extern const ClassDecl kCPUModule;
extern const ClassDecl kIDEDrivesModule;
extern const ClassDecl kUSBModule;
extern const ClassDecl kLPTModule;
extern const ClassDecl kModemsModule;
extern const ClassDecl kDevicesModule;
extern const ClassDecl kMemoryModule;
extern const ClassDecl kPortsModule;
extern const ClassDecl kPCIModule;
extern const ClassDecl kCMOSModule;
extern const ClassDecl kIntelModule;

// Media.cpp
extern const ClassDecl kMixersModule;
extern const ClassDecl kMultimediaModule;
extern const ClassDecl kDisplayModule;
extern const ClassDecl kDirectXModule;
extern const ClassDecl kMMDevicesModule;

// Networking.cpp
extern const ClassDecl kNetworkDevicesModule;
extern const ClassDecl kRASModule;
extern const ClassDecl kInternetModule;
extern const ClassDecl kIPStatModule;
extern const ClassDecl kWinsockModule;
extern const ClassDecl kVistaFirewallModule;
extern const ClassDecl kWifiModule;

// System.cpp
extern const ClassDecl kComputerIdModule;
extern const ClassDecl kOSModule;
extern const ClassDecl kDrivesModule;
extern const ClassDecl kPrintersModule;
extern const ClassDecl kRegionalSettingsModule;
extern const ClassDecl kSharesModule;
extern const ClassDecl kUsersModule;
extern const ClassDecl kWMIModule;
extern const ClassDecl kEventLogModule;
extern const ClassDecl kOSUpdatesModule;
extern const ClassDecl kScheduledTasksModule;
extern const ClassDecl kPowerOptionsModule;
extern const ClassDecl kSyncModule;

// Software.cpp
extern const ClassDecl kDesktopModule;
extern const ClassDecl kInstalledProgramsModule;
extern const ClassDecl kIEModule;
extern const ClassDecl kXMLFileModule;

}  // namespace kestra
