#include "Modules/DMI/DMIClasses.h"

namespace kestra {
namespace {

using enum ParamType;

// The words, their spelling and their places are fixed: queries compare with them. A place is the
// number or bit of the SMBIOS standard (DSP0134), and places that have no word stay empty, but for
// two lists that are shorter than the standard's: Characteristics1 of BIOS has no place for bit 14,
// and Family of Processor ends its gaps behind K5. There, number and place differ.

constexpr ParamDecl kBIOSParams[] = {
    {"Vendor", String},
    {"BIOSVersion", String},
    {"ReleaseDate", String},
    {"Characteristics1", Bitmask,
     "||||ISA|MCI|EISA|PCI|PCMCIA|PnP|APM|Upgradeable|ShadowingAllowed|VLVESA|CDBoot|"
     "SelectableBoot|RomSocketed|PCMCIABoot|EDD|NECFloppy|ToshibaFloppy|360Floppy|1200Floppy|"
     "720Floppy|2880Floppy|PrintScreen|KeyboardServ|SerialServ|PrinterServ|CGIVideo"},
    {"Characteristics2", Bitmask, "NECPC98"},
    {"Characteristics3", Bitmask,
     "ACPI|USB|AGP|I2OBoot|LS120Boot|ZIPDriveBoot|1394Boot|SmartBattary|BootSpec|FKeyNetworkBoot"},
};
constinit const ClassDecl kBIOS = {
    .name = "BIOS", .params = kBIOSParams, .description = "The firmware itself."};

constexpr ParamDecl kSystemParams[] = {
    {"Manufacturer", String},
    {"ProductName", String},
    {"Version", String},
    {"SerialNumber", String},
    {"UUID", String},
    {"WakeupType", Enum,
     "|Other|Unknown|APMTimer|ModemRing|LANRemote|PowerSwitch|PCIPME|ACPowerRestored"},
};
constinit const ClassDecl kSystem = {
    .name = "System", .params = kSystemParams, .description = "The machine as its maker names it."};

constexpr ParamDecl kBaseboardParams[] = {
    {"Manufacturer", String},
    {"ProductName", String},
    {"Version", String},
    {"SerialNumber", String},
};
constinit const ClassDecl kBaseboard = {
    .name = "Baseboard", .params = kBaseboardParams, .description = "A main board."};

constexpr ParamDecl kSystemEnclosureParams[] = {
    {"Manufacturer", String},
    {"Type", Enum,
     "|Other|Unknown|Desktop|LowProfileDesktop|PizzaBox|MiniTower|Tower|Portable|Laptop|Notebook|"
     "Handheld|DockingStation|AllInOne|SubNotebook|SpaceSaving|LunchBox|MainServer|Expansion|Sub|"
     "BusExpansion|Peripherial|RAID|RackMount|SealedCase"},
    {"Locked", Dword},
    {"Version", String},
    {"SerialNumber", String},
    {"AssetTag", String},
    {"BootupState", Enum, "|Other|Unknown|Safe|Warning|Critical|NonRecoverable"},
    {"PowerSupplyState", Enum, "|Other|Unknown|Safe|Warning|Critical|NonRecoverable"},
    {"ThermalState", Enum, "|Other|Unknown|Safe|Warning|Critical|NonRecoverable"},
    {"SecurityStatus", Enum,
     "|Other|Unknown|None|ExternalInterfaceLockedOut|ExternalInterfaceEnabled"},
};
constinit const ClassDecl kSystemEnclosure = {
    .name = "SystemEnclosure",
    .params = kSystemEnclosureParams,
    .description = "The case and what it reports of its state."};

constexpr ParamDecl kProcessorParams[] = {
    {"SocketDesignation", String},
    {"ProcessorType", Enum, "|Other|Unknown|CPU|Math|DSP|Video"},
    {"Family", Enum,
     "|Other|Unknown|8086|80286|Intel386|Intel486|8087|80287|80386|80486|Pentium|PentiumPro|"
     "PentiumII|PentiumMMX|Celeron|PentiumIIXeon|PentiumIII|M1|M1_1|M1_2|M1_3|M1_4|M1_5|K5|K5_1|K5_"
     "2|K5_3|K5_4|K5_5|PowerPC|PowerPC601|PowerPC603|PowerPC603+|PowerPC604|Alpha|MIPS|SPARC"},
    {"Manufacturer", String},
    {"Version", String},
    {"Voltage", Bitmask, "5V|3.3V|2.9V"},
    {"CurrentVoltage", Dword, "mV"},
    {"ExternalClock", Dword, "MHZ"},
    {"MaxSpeed", Dword, "MHZ"},
    {"CurrentSpeed", Dword, "MHZ"},
    {"Status", Enum, "Unknown|Enabled|DisabledByUser|DisabledByBIOS|IDLE"},
    {"Upgrade", Enum,
     "|Other|Unknown|DaughterBoard|ZIFSocket|ReplaceablePiggyBack|None|LIFSocket|Slot1|Slot2"},
    {"SerialNumber", String},
    {"AssetTag", String},
    {"PartNumber", String},
};
constinit const ClassDecl kProcessor = {.name = "Processor",
                                        .params = kProcessorParams,
                                        .description = "A processor socket and what is in it."};

constexpr ParamDecl kMemoryControllerParams[] = {
    {"ErrorDetectionMethod", Enum,
     "|Other|Unknown|None|8bitParity|32bitECC|64bitECC|128bitECC|CRC"},
    {"ErrorCorrectionCapability", Bitmask, "Other|Unknown|None|SingleBit|DowbleBit|ErrorScrubbing"},
    {"SupportedInterleave", Enum, "|Other|Unknown|OneWay|TwoWay|FourWay|EightWay|SixteenWay"},
    {"CurrentInterleave", Enum, "|Other|Unknown|OneWay|TwoWay|FourWay|EightWay|SixteenWay"},
    {"MaxModuleSize", Dword, "MB"},
    {"SupportedSpeeds", Bitmask, "Other|Unknown|70ns|60ns|50ns"},
    {"SupportedTypes", Bitmask,
     "Other|Unknown|Standard|FastPageMode|EDO|Parity|ECC|SIMM|DIMM|BurstEDO|SDRAM"},
    {"Voltage", Bitmask, "5V|3.3V|2.9V"},
    {"SlotsNumber", Dword},
};
constinit const ClassDecl kMemoryController = {.name = "MemoryController",
                                               .params = kMemoryControllerParams,
                                               .description = "A memory controller."};

constexpr ParamDecl kMemoryModuleParams[] = {
    {"Designation", String},
    {"BankConnections", Dword},
    {"CurrentSpeed", Dword, "ns"},
    {"MemoryType", Bitmask,
     "Other|Unknown|Standard|FastPageMode|EDO|Parity|ECC|SIMM|DIMM|BurstEDO|SDRAM"},
    {"InstalledSize", Dword, "MB"},
    {"EnabledSize", Dword, "MB"},
    {"ErrorStatus", Bitmask, "Uncorrectable|Correctable|Log"},
};
constinit const ClassDecl kMemoryModule = {
    .name = "MemoryModule",
    .params = kMemoryModuleParams,
    .description = "A memory module as older firmware tells of it."};

constexpr ParamDecl kCacheParams[] = {
    {"Designation", String},
    {"Level", Dword},
    {"IsSocketed", Dword},
    {"Location", Enum, "Internal|External||Unknown"},
    {"IsEnabled", Dword},
    {"Mode", Enum, "WriteThrouth|WriteBack|Varies|Unknown"},
    {"MaxSize", Dword, "KB"},
    {"InstalledSize", Dword, "KB"},
    {"SupportedSRAM", Bitmask,
     "Other|Unknown|NonBurst|Burst|PipelineBurst|Synchronous|Asynchronous"},
    {"CurrentSRAM", Bitmask, "Other|Unknown|NonBurst|Burst|PipelineBurst|Synchronous|Asynchronous"},
    {"Speed", Dword, "ns"},
    {"ErrorCorrection", Enum, "|Other|Unknown|None|Parity|SingleBitECC|MultiBitECC"},
    {"Type", Enum, "|Other|Unknown|Instruction|Data|Unified"},
    {"Associativity", Enum, "|Other|Unknown|DirectMapped|2Way|4Way|Full"},
};
constinit const ClassDecl kCache = {
    .name = "Cache", .params = kCacheParams, .description = "A processor cache."};

constexpr ParamDecl kBatteryParams[] = {
    {"Location", String},     {"Manufacturer", String}, {"ManufactureDate", String},
    {"SerialNumber", String}, {"DeviceName", String},
};
constinit const ClassDecl kBattery = {
    .name = "Battery", .params = kBatteryParams, .description = "A battery."};

constexpr ParamDecl kPortConnectorParams[] = {
    {"InternalReference", String},
    {"InternalType", Enum,
     "None|Centronics|MiniCentronics|Propietary|DB25Male|DB25Female|DB15Male|DB15Female|DB9Male|"
     "DB9Female|RJ11|RJ45|50PinMimiSCSI|MiniDIN|MicroDIN|PS/"
     "2|Infrared|HP-HIL|USB|SSASCSI|DIN8Male|DIN8Female|OnBoardIDE|OnBoardFloppy|9PinDualInline|"
     "25PinDualInline|50PinDualInline|68PinDualInline|OnBoardSoundInput|MiniCentronis14|"
     "MiniCentronics26|MiniJack|BNC|1394"},
    {"ExternalReference", String},
    {"ExternalType", Enum,
     "None|Centronics|MiniCentronics|Propietary|DB25Male|DB25Female|DB15Male|DB15Female|DB9Male|"
     "DB9Female|RJ11|RJ45|50PinMimiSCSI|MiniDIN|MicroDIN|PS/"
     "2|Infrared|HP-HIL|USB|SSASCSI|DIN8Male|DIN8Female|OnBoardIDE|OnBoardFloppy|9PinDualInline|"
     "25PinDualInline|50PinDualInline|68PinDualInline|OnBoardSoundInput|MiniCentronis14|"
     "MiniCentronics26|MiniJack|BNC|1394"},
    {"PortType", Enum,
     "None|ParallelXT/AT|ParallelPS/2|ParallelECP|ParallelEPP|ParallelECP/EPP|SerialXT/"
     "AT|Serial16450|Serial16550|Serial16550A|SCSI|MIDI|Joystick|Keyboard|Mouse|SSA_SCSI|USB|1394|"
     "PCMCIA_I|PCMCIA_II|PCMCIA_III|Cardbus|AccessBus|SCSI_II|SCSI_Wide|PC98|PC98Hireso|PCH98|"
     "Video|Audio|Modem|Network"},
};
constinit const ClassDecl kPortConnector = {
    .name = "PortConnector",
    .params = kPortConnectorParams,
    .description = "A connector inside or outside the case."};

constexpr ParamDecl kSlotParams[] = {
    {"Designation", String},
    {"SlotType", Enum,
     "|Other|Unknown|ISA|MCA|EISA|PCI|PCMCIA|VL_VESA|Proprietary|ProcessorCardSlot|"
     "ProprietaryMemoryCardSlot|IORiserCardSlot|NuBus|PCI66MHz|AGP|AGP2X|AGP4X"},
    {"DataBusWidth", Enum, "|Other|Unknown|8bit|16bit|32bit|64bit|128bit"},
    {"CurrentUsage", Enum, "|Other|Unknown|Available|InUse"},
    {"Length", Enum, "|Other|Unknown|ShortLength|LongLength"},
    {"ID", Dword},
    {"Characteristics1", Bitmask,
     "Unknown|5.0V|3.3V|Shared|PCCard16|CardBus|ZoomVideo|ModemRingResume"},
    {"Characteristics2", Bitmask, "PME|HotPlug"},
};
constinit const ClassDecl kSlot = {
    .name = "Slot", .params = kSlotParams, .description = "An expansion slot."};

constexpr ParamDecl kOnBoardDeviceParams[] = {
    {"IsEnabled", Dword},
    {"Type", Enum, "|Other|Unknown|Video|SCSIController|Ethernet|TokenRing|Sound"},
    {"Description", String},
};
constinit const ClassDecl kOnBoardDevice = {
    .name = "OnBoardDevice",
    .params = kOnBoardDeviceParams,
    .description = "A device that is built into the main board."};
constexpr const ClassDecl* kOnBoardDevicesChildren[] = {&kOnBoardDevice};
constinit const ClassDecl kOnBoardDevices = {.name = "OnBoardDevices",
                                             .children = kOnBoardDevicesChildren,
                                             .description = "The devices of one list."};

constexpr ParamDecl kOEMStringParams[] = {
    {"ID", Dword},
    {"String", String},
};
constinit const ClassDecl kOEMString = {
    .name = "OEMString", .params = kOEMStringParams, .description = "A text of the maker's own."};
constexpr const ClassDecl* kOEMStringsChildren[] = {&kOEMString};
constinit const ClassDecl kOEMStrings = {
    .name = "OEMStrings", .children = kOEMStringsChildren, .description = "The texts of one list."};

constexpr ParamDecl kPhysicalMemoryArrayParams[] = {
    {"Location", Enum,
     "|Other|Unknown|System board or "
     "motherboard|ISA|EISA|PCI|MCA|PCMCIA|Proprietary|NuBus|PC-98/C20|PC-98/C24|PC-98/E|PC-98/"
     "Local bus"},
    {"Use", Enum,
     "|Other|Unknown|SystemMemory|VideoMemory|FlashMemory|Non-volatile RAM|CacheMemory"},
    {"ErrorCorrectionTypes", Enum, "|Other|Unknown|None|Parity|Single-bit ECC|Multi-bit ECC|CRC"},
    {"MaximumCapacity", Dword, "KB"},
};
constinit const ClassDecl kPhysicalMemoryArray = {
    .name = "PhysicalMemoryArray",
    .params = kPhysicalMemoryArrayParams,
    .description = "A group of memory devices with one use."};

constexpr ParamDecl kMemoryDeviceParams[] = {
    {"TotalWidth", Dword},
    {"DataWidth", Dword},
    {"Size", Dword, "KB"},
    {"FormFactor", Enum,
     "|Other|Unknown|SIMM|SIP|Chip|DIP|ZIP|ProprietaryCard|DIMM|TSOP|Row of "
     "chips|RIMM|SODIMM|SRIMM"},
    {"DeviceSet", Dword},
    {"DeviceLocator", String},
    {"BankLocator", String},
    {"Type", Enum,
     "|Other|Unknown|DRAM|EDRAM|VRAM|SRAM|RAM|ROM|FLASH|EEPROM|FEPROM|EPROM|CDRAM|3DRAM|SDRAM|"
     "SGRAM|RDRAM|DDR"},
    {"TypeDetail", Bitmask,
     "|Other|Unknown|Fast-paged|Static column|Pseudo-static|RAMBUS|Synchronous|CMOS|EDO|Window "
     "DRAM|Cache DRAM|Non-volatile"},
    {"Speed", Dword, "MHz"},
    {"Manufacturer", String},
    {"SerialNumber", String},
    {"AssetTag", String},
    {"PartNumber", String},
};
constinit const ClassDecl kMemoryDevice = {.name = "MemoryDevice",
                                           .params = kMemoryDeviceParams,
                                           .description = "A memory socket and what is in it."};

constexpr ParamDecl kPointingDeviceParams[] = {
    {"Type", Enum,
     "|Other|Unknown|Mouse|Track Ball|Track Point|Glide Point|Touch Pad|Touch Screen|Optical "
     "Sensor"},
    {"Interface", Enum,
     "|Other|Unknown|Serial|PS/2|Infrared|HP-HIL|Bus mouse|ADB|Bus mouse DB-9|Bus mouse "
     "micro-DIN|USB"},
    {"NumberOfButtons", Dword},
};
constinit const ClassDecl kPointingDevice = {.name = "PointingDevice",
                                             .params = kPointingDeviceParams,
                                             .description = "A built-in pointing device."};

constexpr ParamDecl kPortableBatteryParams[] = {
    {"Location", String},
    {"Manufacturer", String},
    {"ManufactureDate", String},
    {"SerialNumber", String},
    {"DeviceName", String},
    {"DeviceChemistry", Enum,
     "|Other|Unknown|Lead Acid|Nickel Cadmium|Nickel metal hydride|Lithium-ion|Zinc air|Lithium "
     "Polymer"},
    {"DesignCapacity", Dword},
    {"DesignVoltage", Dword},
    {"SBDSVersionNumber", String},
    {"MaxErrorBatteryData", Dword},
    {"SBDSSerialNumber", Dword},
    {"SBDSManufDate", Dword},
    {"SBDSDeviceChemistry", String},
    {"DesignCapacMultiplier", Dword},
    {"OEMSpecific", Dword},
};
constinit const ClassDecl kPortableBattery = {.name = "PortableBattery",
                                              .params = kPortableBatteryParams,
                                              .description = "A battery of a portable machine."};

constexpr ParamDecl kVoltageProbeParams[] = {
    {"Description", String},
    {"Status", Enum, "|Other|Unknown|OK|Non-critical|Critical|Non-recoverable"},
    {"Location", Enum,
     "|Other|Unknown|Processor|Disk|Peripheral Bay|System Management Module|Motherboard"},
    {"MaximumValue", Dword},
    {"MinimumValue", Dword},
    {"Resolution", Dword},
    {"Tolerance", Dword},
    {"Accuracy", Dword},
    {"OEMDefined", Dword},
    {"NominalValue", Dword},
};
constinit const ClassDecl kVoltageProbe = {
    .name = "VoltageProbe", .params = kVoltageProbeParams, .description = "A voltage probe."};

constexpr ParamDecl kCoolingDeviceParams[] = {
    {"Status", Enum, "|Other|Unknown|OK|Non-critical|Critical|Non-recoverable"},
    {"Location", Enum,
     "|Other|Unknown|Fan|Centrifugal Blower|Chip Fan|Cabinet Fan|Power Supply Fan|Heat "
     "Pipe|Integrated Refrigeration|Active Cooling"},
    {"CoolingUnitGroup", Dword},
    {"OEMDefined", Dword},
    {"NominalSpeed", Dword},
};
constinit const ClassDecl kCoolingDevice = {.name = "CoolingDevice",
                                            .params = kCoolingDeviceParams,
                                            .description = "A fan or another cooling device."};

constexpr ParamDecl kTemperatureProbeParams[] = {
    {"Description", String},
    {"Status", Enum, "|Other|Unknown|OK|Non-critical|Critical|Non-recoverable"},
    {"Location", Enum,
     "|Other|Unknown|Processor|Disk|Peripheral Bay|System Management Module|Motherboard|Memory "
     "Module|Processor Module|Power Unit|Add-in Card|Front Panel Board|Back Panel Board|Power "
     "System Board|Drive Back Plane"},
    {"MaximumValue", Dword},
    {"MinimumValue", Dword},
    {"Resolution", Dword},
    {"Tolerance", Dword},
    {"Accuracy", Dword},
    {"OEMDefined", Dword},
    {"NominalValue", Dword},
};
constinit const ClassDecl kTemperatureProbe = {.name = "TemperatureProbe",
                                               .params = kTemperatureProbeParams,
                                               .description = "A temperature probe."};

constexpr ParamDecl kElectricalCurrProbeParams[] = {
    {"Description", String},
    {"Status", Enum, "|Other|Unknown|OK|Non-critical|Critical|Non-recoverable"},
    {"Location", Enum,
     "|Other|Unknown|Processor|Disk|Peripheral Bay|System Management Module|Motherboard|Memory "
     "Module|Processor Module|Power Unit|Add-in Card"},
    {"MaximumValue", Dword},
    {"MinimumValue", Dword},
    {"Resolution", Dword},
    {"Tolerance", Dword},
    {"Accuracy", Dword},
    {"OEMDefined", Dword},
    {"NominalValue", Dword},
};
constinit const ClassDecl kElectricalCurrProbe = {.name = "ElectricalCurrProbe",
                                                  .params = kElectricalCurrProbeParams,
                                                  .description = "A probe of electrical current."};

constexpr ParamDecl kSystemPowerSupplyParams[] = {
    {"PowerUnitGroup", Dword},
    {"Location", String},
    {"DeviceName", String},
    {"Manufacturer", String},
    {"SerialNumber", String},
    {"AssetTagNumber", String},
    {"ModelPartNumber", String},
    {"RevisionLevel", String},
    {"MaxPowerCapacity", Dword, "mW"},
    {"Status", Enum, "|Other|Unknown|OK|Non-critical|Critical"},
    {"Type", Enum, "|Other|Unknown|Linear|Switching|Battery|UPS|Converter|Regulator"},
    {"VoltageSwitching", Enum, "|Other|Unknown|Manual|Auto-switch|Wide range|Not applicable"},
    {"PowerSupply", Bitmask, "|Hot replaceable|Present|Unplugged from the wall"},
};
constinit const ClassDecl kSystemPowerSupply = {.name = "SystemPowerSupply",
                                                .params = kSystemPowerSupplyParams,
                                                .description = "A power supply."};

constexpr const ClassDecl* kChildren[] = {&kBIOS,
                                          &kSystem,
                                          &kBaseboard,
                                          &kSystemEnclosure,
                                          &kProcessor,
                                          &kMemoryController,
                                          &kMemoryModule,
                                          &kCache,
                                          &kBattery,
                                          &kPortConnector,
                                          &kSlot,
                                          &kOnBoardDevices,
                                          &kOEMStrings,
                                          &kPhysicalMemoryArray,
                                          &kMemoryDevice,
                                          &kPointingDevice,
                                          &kPortableBattery,
                                          &kVoltageProbe,
                                          &kCoolingDevice,
                                          &kTemperatureProbe,
                                          &kElectricalCurrProbe,
                                          &kSystemPowerSupply};
constexpr ArgDecl kArgs[] = {{"PNPBIOS", Dword}, {"MainItemsOnly", Dword}};

}  // namespace

constinit const ClassDecl kDMIModule = {
    .name = "DMI",
    .children = kChildren,
    .args = kArgs,
    .description = "What the firmware's structure table says of the machine."};

}  // namespace kestra
