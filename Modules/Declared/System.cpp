#include "Modules/Declared/DeclaredModules.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ArgDecl kRebootArgs[] = {{"Force", Dword}};
constexpr ActionDecl kOSActions[] = {{"Reboot", kRebootArgs}};

constinit const ClassDecl kDrive = {.name = "Drive"};
constexpr const ClassDecl* kDrivesChildren[] = {&kDrive};
constexpr ArgDecl kDrivesArgs[] = {
    {"CheckRecycleBin", Dword}, {"CheckCDRWritable", Dword}, {"ShowRemDriveFreeSpace", Dword}};
constexpr ArgDecl kDrivePathArgs[] = {{"DrivePath", String}};
constexpr ActionDecl kDrivesActions[] = {{"EmptyRecycleBin", kDrivePathArgs},
                                         {"EmptyTempDir", kDrivePathArgs}};

constinit const ClassDecl kPrinterJob = {.name = "PrinterJob", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kPrinterChildren[] = {&kPrinterJob};
constinit const ClassDecl kPrinter = {
    .name = "Printer", .children = kPrinterChildren, .canBeAddedAndDeleted = true};
constinit const ClassDecl kNetworkPrinter = {.name = "NetworkPrinter"};
constexpr const ClassDecl* kPrintersChildren[] = {&kPrinter, &kNetworkPrinter};
constexpr ArgDecl kPrintersArgs[] = {
    {"LocalOnly", Dword}, {"ShowNetPrinters", Dword}, {"DelModeLocPrinter", Dword}};
constexpr ArgDecl kControlPrinterArgs[] = {{"PrinterName", String}, {"Control", Dword}};
constexpr ActionDecl kPrintersActions[] = {{"ControlPrinter", kControlPrinterArgs}};

constinit const ClassDecl kInputLanguage = {.name = "InputLanguage", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kRegionalSettingsChildren[] = {&kInputLanguage};

constinit const ClassDecl kShare = {.name = "Share", .canBeAddedAndDeleted = true};
constexpr const ClassDecl* kSharesChildren[] = {&kShare};

constinit const ClassDecl kUser = {.name = "User"};
constexpr const ClassDecl* kUsersChildren[] = {&kUser};
constexpr ArgDecl kUsersArgs[] = {{"CurrentUserOnly", Dword, nullptr, 1},
                                  {"LocalInfoOnly", Dword, nullptr, 1},
                                  {"GetCredentialsParams", Dword}};

constinit const ClassDecl kWMIParameter = {.name = "WMIParameter"};
constexpr const ClassDecl* kWMIInstanceChildren[] = {&kWMIParameter};
constinit const ClassDecl kWMIInstance = {.name = "WMIInstance", .children = kWMIInstanceChildren};
constexpr const ClassDecl* kWMIClassChildren[] = {&kWMIInstance};
constinit const ClassDecl kWMIClass = {.name = "WMIClass", .children = kWMIClassChildren};
constexpr const ClassDecl* kWMINamespaceChildren[] = {&kWMIClass};
constinit const ClassDecl kWMINamespace = {.name = "WMINamespace",
                                           .children = kWMINamespaceChildren};
constexpr const ClassDecl* kWMIChildren[] = {&kWMINamespace};
constexpr ArgDecl kWMIArgs[] = {{"Root", String},
                                {"NamespaceDeep", Dword},
                                {"Class", String},
                                {"Condition", String},
                                {"MaxItemCount", Dword, nullptr, 4294967295},
                                {"ItemTimeOut", Dword, nullptr, 6000},
                                {"ClassTimeOut", Dword, nullptr, 25000}};

constinit const ClassDecl kLogEvent = {.name = "Event"};
constexpr const ClassDecl* kEventLogChildren[] = {&kLogEvent};
constexpr ArgDecl kEventLogArgs[] = {
    {"Log", Bitmask, "Application|Security|System", 5},
    {"Type", Bitmask, "Error|Warning|Information|Success Audit|Failure Audit", 17},
    {"MaxEvents", Dword, nullptr, 10},
    {"DateFilter_Days", Dword},
    {"WinLog", String, nullptr, 0, "Application"},
    {"Level", Bitmask, "Audit Success|Critical|Error|Warning|Information|Verbose", 14}};

constinit const ClassDecl kOSUpdate = {.name = "OSUpdate"};
constexpr const ClassDecl* kOSUpdatesChildren[] = {&kOSUpdate};

constinit const ClassDecl kSchTaskEventTrig = {.name = "SchTaskEventTrig"};
constexpr const ClassDecl* kScheduledTaskTrigChildren[] = {&kSchTaskEventTrig};
constinit const ClassDecl kScheduledTaskTrig = {.name = "ScheduledTaskTrig",
                                                .children = kScheduledTaskTrigChildren};
constinit const ClassDecl kScheduledTaskAction = {.name = "ScheduledTaskAction"};
constexpr const ClassDecl* kScheduledTaskChildren[] = {&kScheduledTaskTrig, &kScheduledTaskAction};
constinit const ClassDecl kScheduledTask = {.name = "ScheduledTask",
                                            .children = kScheduledTaskChildren};
constexpr const ClassDecl* kScheduledTasksChildren[] = {&kScheduledTask};
constexpr ArgDecl kScheduledTasksArgs[] = {{"Folder", String, nullptr, 0, "\\*"}};

constinit const ClassDecl kUserPwrPolicy = {.name = "UserPwrPolicy"};
constexpr const ClassDecl* kPowerSchemeChildren[] = {&kUserPwrPolicy};
constinit const ClassDecl kPowerScheme = {.name = "PowerScheme", .children = kPowerSchemeChildren};
constinit const ClassDecl kPowerActionPolicy = {.name = "PowerActionPolicy"};
constexpr const ClassDecl* kGlobalUserPwrPolicyChildren[] = {&kPowerActionPolicy};
constinit const ClassDecl kGlobalUserPwrPolicy = {.name = "GlobalUserPwrPolicy",
                                                  .children = kGlobalUserPwrPolicyChildren};
constexpr const ClassDecl* kPowerOptionsChildren[] = {&kPowerScheme, &kGlobalUserPwrPolicy};

constinit const ClassDecl kMutex = {.name = "Mutex"};
constinit const ClassDecl kSyncEvent = {.name = "Event"};
constexpr const ClassDecl* kSyncChildren[] = {&kMutex, &kSyncEvent};
constexpr ArgDecl kSyncArgs[] = {{"MutexName", String}, {"EventName", String}};

}  // namespace

constinit const ClassDecl kComputerIdModule = {
    .name = "ComputerId", .description = "What tells this machine from every other one."};
constinit const ClassDecl kOSModule = {
    .name = "OS", .actions = kOSActions, .description = "The operating system."};
constinit const ClassDecl kDrivesModule = {.name = "Drives",
                                           .children = kDrivesChildren,
                                           .actions = kDrivesActions,
                                           .args = kDrivesArgs,
                                           .description = "Drives and the room on them."};
constinit const ClassDecl kPrintersModule = {.name = "Printers",
                                             .children = kPrintersChildren,
                                             .actions = kPrintersActions,
                                             .args = kPrintersArgs,
                                             .description = "Printers and their jobs."};
constinit const ClassDecl kRegionalSettingsModule = {
    .name = "RegionalSettings",
    .children = kRegionalSettingsChildren,
    .description = "Language, formats and input languages."};
constinit const ClassDecl kSharesModule = {
    .name = "Shares",
    .children = kSharesChildren,
    .description = "What this machine shares on the network."};
constinit const ClassDecl kUsersModule = {.name = "Users",
                                          .children = kUsersChildren,
                                          .args = kUsersArgs,
                                          .description = "User accounts."};
constinit const ClassDecl kWMIModule = {
    .name = "WMI",
    .children = kWMIChildren,
    .args = kWMIArgs,
    .description = "Namespaces, classes and instances of the management interface."};
constinit const ClassDecl kEventLogModule = {.name = "EventLog",
                                             .children = kEventLogChildren,
                                             .args = kEventLogArgs,
                                             .description = "Events of the system's logs."};
constinit const ClassDecl kOSUpdatesModule = {.name = "OSUpdates",
                                              .children = kOSUpdatesChildren,
                                              .description = "Installed updates of the system."};
constinit const ClassDecl kScheduledTasksModule = {
    .name = "ScheduledTasks",
    .children = kScheduledTasksChildren,
    .args = kScheduledTasksArgs,
    .description = "Scheduled tasks with their triggers and actions."};
constinit const ClassDecl kPowerOptionsModule = {.name = "PowerOptions",
                                                 .children = kPowerOptionsChildren,
                                                 .description = "Power schemes and policies."};
constinit const ClassDecl kSyncModule = {
    .name = "Sync",
    .children = kSyncChildren,
    .args = kSyncArgs,
    .description = "Whether a named mutex or event exists, and its state."};

}  // namespace kestra
