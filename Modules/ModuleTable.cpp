#include "Modules/ModuleTable.h"

#include "Modules/AtomTime/AtomTimeClasses.h"
#include "Modules/DMI/DMIClasses.h"
#include "Modules/DNSResolve/DNSResolveClasses.h"
#include "Modules/Declared/DeclaredModules.h"
#include "Modules/Files/FileClasses.h"
#include "Modules/Files/FilesModule.h"
#include "Modules/IniFile/IniFileClasses.h"
#include "Modules/IniFile/IniFileModule.h"
#include "Modules/Network/NetworkClasses.h"
#include "Modules/NetworkMap/NetworkMapClasses.h"
#include "Modules/Processes/ProcessesModule.h"
#include "Modules/Registry/RegistryClasses.h"
#include "Modules/Registry/RegistryModule.h"
#include "Modules/Security/SecurityClasses.h"
#include "Modules/Services/ServicesClasses.h"
#include "Modules/StartUpPrograms/StartUpProgramsClasses.h"

namespace kestra {
namespace {

template <class T>
Ref<DiagModule> Create(Ref<DiagClass> diagClass, Ref<CMachine> machine) {
  return MakeRef<T>(std::move(diagClass), std::move(machine));
}

bool HasFiles(CMachine& machine) {
  return machine.Files() != nullptr;
}
bool HasRegistry(CMachine& machine) {
  return machine.Registry() != nullptr;
}
bool HasProcesses(CMachine& machine) {
  return machine.Processes() != nullptr;
}

// The order is a contract with everything above: it is that of the class tree, of module lists
// and of dumps.
constexpr ModuleRow kModules[] = {
    {&kComputerIdModule, nullptr},
    {&kOSModule, nullptr},
    {&kCPUModule, nullptr},
    {&kDesktopModule, nullptr},
    {&kDrivesModule, nullptr},
    {&kIDEDrivesModule, nullptr},
    {&kIniFileModule, &Create<CIniFileModule>, &HasFiles},
    {&kInstalledProgramsModule, nullptr},
    {&kUSBModule, nullptr},
    {&kLPTModule, nullptr},
    {&kDMIModule, nullptr},
    {&kMixersModule, nullptr},
    {&kPrintersModule, nullptr},
    {&kProcessesModule, &Create<CProcessesModule>, &HasProcesses},
    {&kStartUpProgramsModule, nullptr},
    {&kModemsModule, nullptr},
    {&kMultimediaModule, nullptr},
    {&kRegionalSettingsModule, nullptr},
    {&kDevicesModule, nullptr},
    {&kMemoryModule, nullptr},
    {&kNetworkModule, nullptr},
    {&kNetworkDevicesModule, nullptr},
    {&kNetworkMapModule, nullptr},
    {&kRASModule, nullptr},
    {&kAntivirusModule, nullptr},
    {&kIEModule, nullptr},
    {&kDisplayModule, nullptr},
    {&kInternetModule, nullptr},
    {&kPortsModule, nullptr},
    {&kSharesModule, nullptr},
    {&kUsersModule, nullptr},
    {&kPCIModule, nullptr},
    {&kWMIModule, nullptr},
    {&kServicesModule, nullptr},
    {&kIPStatModule, nullptr},
    {&kEventLogModule, nullptr},
    {&kOSUpdatesModule, nullptr},
    {&kScheduledTasksModule, nullptr},
    {&kFirewallsModule, nullptr},
    {&kDirectXModule, nullptr},
    {&kWinsockModule, nullptr},
    {&kCMOSModule, nullptr},
    {&kAtomTimeModule, nullptr},
    {&kPowerOptionsModule, nullptr},
    {&kFilesModule, &Create<CFilesModule>, &HasFiles},
    {&kXMLFileModule, nullptr},
    {&kVistaFirewallModule, nullptr},
    {&kRegistryModule, &Create<CRegistryModule>, &HasRegistry},
    {&kDNSResolveModule, nullptr},
    {&kWifiModule, nullptr},
    {&kIntelModule, nullptr},
    {&kSyncModule, nullptr},
    {&kMMDevicesModule, nullptr},
};
static_assert(std::size(kModules) == 53);

}  // namespace

ModuleTable BuiltInModules() {
  return kModules;
}

}  // namespace kestra
