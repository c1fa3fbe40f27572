#include "Modules/Declared/DeclaredModules.h"

namespace kestra {
namespace {

using enum ParamType;

constinit const ClassDecl kDeterministicCache = {.name = "DeterministicCache",
                                                 .canBeAddedAndDeleted = true};
constinit const ClassDecl kLevel2Cache = {.name = "Level2Cache", .canBeAddedAndDeleted = true};
constinit const ClassDecl kTLBAndCacheInfo = {.name = "TLBAndCacheInfo",
                                              .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kCPUChildren[] = {&kDeterministicCache, &kLevel2Cache,
                                             &kTLBAndCacheInfo};
constexpr ArgDecl kCPUArgs[] = {{"CheckFrequency", Dword}};

constinit const ClassDecl kIDESMARTAttribute = {.name = "IDESMARTAttribute"};
constexpr const ClassDecl* kIDEDriveChildren[] = {&kIDESMARTAttribute};
constinit const ClassDecl kIDEDrive = {.name = "IDEDrive", .children = kIDEDriveChildren};
constexpr const ClassDecl* kIDEDrivesChildren[] = {&kIDEDrive};
constexpr ArgDecl kIDEDrivesArgs[] = {
    {"OBIST", Bitmask, "Oscillator|DRAM|MainController|FlashMemory|TrayIn|TrayOut|SpindleMotor"}};

constinit const ClassDecl kUSBPort = {.name = "USBPort"};
constexpr const ClassDecl* kUSBHUBChildren[] = {&kUSBPort};
constinit const ClassDecl kUSBHUB = {.name = "USBHUB", .children = kUSBHUBChildren};
constexpr const ClassDecl* kUSBChildren[] = {&kUSBHUB};
constexpr ArgDecl kUSBArgs[] = {{"CheckStringDescriptors", Dword}};

constinit const ClassDecl kLPTPort = {.name = "LPTPort"};
constexpr const ClassDecl* kLPTChildren[] = {&kLPTPort};

constinit const ClassDecl kModemQuery = {.name = "ModemQuery"};
constexpr const ClassDecl* kModemChildren[] = {&kModemQuery};
constinit const ClassDecl kModem = {.name = "Modem", .children = kModemChildren};
constexpr const ClassDecl* kModemsChildren[] = {&kModem};
constexpr ArgDecl kModemsArgs[] = {{"QueryModem", Enum, "no|yes|ATQ", 0}};

constinit const ClassDecl kDeviceParameter = {.name = "DeviceParameter"};
constexpr const ClassDecl* kDeviceChildren[] = {&kDeviceParameter};
constinit const ClassDecl kDevice = {.name = "Device", .children = kDeviceChildren};
constexpr const ClassDecl* kDeviceClassChildren[] = {&kDevice};
constinit const ClassDecl kDeviceClass = {.name = "DeviceClass", .children = kDeviceClassChildren};
constexpr const ClassDecl* kDevicesChildren[] = {&kDeviceClass};
constexpr ArgDecl kDevicesArgs[] = {{"PowerOptions", Dword}};

constinit const ClassDecl kRAM = {.name = "RAM"};
constinit const ClassDecl kSystemResources = {.name = "SystemResources"};
constinit const ClassDecl kSystemVirtualMemory = {.name = "SystemVirtualMemory"};
constexpr const ClassDecl* kMemoryChildren[] = {&kRAM, &kSystemResources, &kSystemVirtualMemory};

constinit const ClassDecl kPort = {.name = "Port"};
constexpr const ClassDecl* kPortsChildren[] = {&kPort};

constinit const ClassDecl kPCIDeviceHeader = {.name = "PCIDeviceHeader"};
constinit const ClassDecl kPCIBridgeHeader = {.name = "PCIBridgeHeader"};
constinit const ClassDecl kCardBusBridgeHeader = {.name = "CardBusBridgeHeader"};
constinit const ClassDecl kPCIPMCapability = {.name = "PCI_PM_CAPABILITY"};
constinit const ClassDecl kPCIAGPCapability = {.name = "PCI_AGP_Capability"};
constinit const ClassDecl kPCIMSICapability = {.name = "PCI_MSI_Capability"};
constinit const ClassDecl kPCIUnknownCapability = {.name = "PCI_UnknownCapability"};
constexpr const ClassDecl* kPCIDeviceChildren[] = {
    &kPCIDeviceHeader,  &kPCIBridgeHeader,  &kCardBusBridgeHeader, &kPCIPMCapability,
    &kPCIAGPCapability, &kPCIMSICapability, &kPCIUnknownCapability};
constinit const ClassDecl kPCIDevice = {.name = "PCIDevice", .children = kPCIDeviceChildren};
constexpr const ClassDecl* kPCIChildren[] = {&kPCIDevice};

constexpr ArgDecl kCMOSArgs[] = {{"Offset", Dword}, {"Count", Dword, nullptr, 128}};

constinit const ClassDecl kParameter = {.name = "Parameter"};
constinit const ClassDecl kCCUEvent = {.name = "CCUEvent"};
constexpr const ClassDecl* kCCUEventsChildren[] = {&kCCUEvent};
constinit const ClassDecl kCCUEvents = {.name = "CCUEvents", .children = kCCUEventsChildren};
constexpr const ClassDecl* kAppAcceleratorChildren[] = {&kParameter};
constinit const ClassDecl kAppAccelerator = {.name = "AppAccelerator",
                                             .children = kAppAcceleratorChildren};
constinit const ClassDecl kDriverFile = {.name = "DriverFile"};
constexpr const ClassDecl* kGraphicsDriversChildren[] = {&kDriverFile};
constinit const ClassDecl kGraphicsDrivers = {.name = "GraphicsDrivers",
                                              .children = kGraphicsDriversChildren};
constexpr const ClassDecl* kIntelChildren[] = {&kParameter, &kCCUEvents, &kAppAccelerator,
                                               &kGraphicsDrivers};
constexpr const char* kWakeOptions = "Off|On|Unchanged";
constexpr ArgDecl kWakeOnLanArgs[] = {{"WakeOnMagicPacket", Enum, kWakeOptions, 2},
                                      {"WakeOnLink", Enum, kWakeOptions, 2},
                                      {"WakeFromPowerOff", Enum, kWakeOptions, 2},
                                      {"WakeOnDirectedPacket", Enum, kWakeOptions, 2}};
constexpr ActionDecl kIntelActions[] = {{"SetWakeOnLanPowerOptions", kWakeOnLanArgs}};
constexpr ArgDecl kIntelArgs[] = {{"Lantern", Dword}};

}  // namespace

constinit const ClassDecl kCPUModule = {.name = "CPU",
                                        .children = kCPUChildren,
                                        .args = kCPUArgs,
                                        .description = "The processors and their caches."};
constinit const ClassDecl kIDEDrivesModule = {
    .name = "IDEDrives",
    .children = kIDEDrivesChildren,
    .args = kIDEDrivesArgs,
    .description = "IDE drives, and what they report of their own health."};
constinit const ClassDecl kUSBModule = {.name = "USB",
                                        .children = kUSBChildren,
                                        .args = kUSBArgs,
                                        .description = "USB hubs, and what is plugged into them."};
constinit const ClassDecl kLPTModule = {
    .name = "LPT", .children = kLPTChildren, .description = "Parallel ports."};
constinit const ClassDecl kModemsModule = {
    .name = "Modems",
    .children = kModemsChildren,
    .args = kModemsArgs,
    .description = "Modems, and their answers to identification commands."};
constinit const ClassDecl kDevicesModule = {.name = "Devices",
                                            .children = kDevicesChildren,
                                            .args = kDevicesArgs,
                                            .description = "Installed devices by device class."};
constinit const ClassDecl kMemoryModule = {.name = "Memory",
                                           .children = kMemoryChildren,
                                           .description = "Memory, and how much of it is in use."};
constinit const ClassDecl kPortsModule = {
    .name = "Ports", .children = kPortsChildren, .description = "Serial and parallel ports."};
constinit const ClassDecl kPCIModule = {
    .name = "PCI",
    .children = kPCIChildren,
    .description = "Devices of the PCI bus with their configuration space."};
constinit const ClassDecl kCMOSModule = {
    .name = "CMOS", .args = kCMOSArgs, .description = "Bytes of the battery-backed set-up memory."};
constinit const ClassDecl kIntelModule = {
    .name = "Intel",
    .children = kIntelChildren,
    .actions = kIntelActions,
    .args = kIntelArgs,
    .description = "Settings and events of Intel chip sets and drivers."};

}  // namespace kestra
