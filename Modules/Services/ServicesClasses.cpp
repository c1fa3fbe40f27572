#include "Modules/Services/ServicesClasses.h"

namespace kestra {
namespace {

using enum ParamType;

// The place of an option is the system's own number or bit (Win32 pages of SERVICE_STATUS and
// QUERY_SERVICE_CONFIG).
constexpr ParamDecl kServiceParams[] = {
    {"Name", String},
    {"DisplayName", String},
    {"ServiceType", Bitmask,
     "KERNEL_DRIVER|FILE_SYSTEM_DRIVER|ADAPTER|RECOGNIZER_DRIVER|WIN32_OWN_PROCESS|"
     "WIN32_SHARE_PROCESS|||INTERACTIVE_PROCESS"},
    {"StartupType", Enum, "Boot|System|Automatic|Manual|Disabled", true},
    {"State", Enum,
     "Unknown|Stopped|StartPending|StopPending|Running|ContinuePending|PausePending|Paused", true},
    {"Path", String},
    {"FileVersion", Version},
    {"ProductName", String},
    {"ProductVersion", Version},
    {"CompanyName", String},
    {"LoadOrderGroup", String},
    {"Dependencies", String},
    {"LogOnAs", String},
    {"Password", String},
    {"ErrorControl", Enum, "Ignore|Normal|Severe|Critical"},
    {"Error", String},
    {"Description", String},
};

constinit const ClassDecl kService = {.name = "Service",
                                      .params = kServiceParams,
                                      .canBeAddedAndDeleted = true,
                                      .description = "A service."};

constexpr const ClassDecl* kServicesChildren[] = {&kService};
constexpr ArgDecl kServicesArgs[] = {{"ServiceStateChangeTimeout", Dword, nullptr, 60}};

}  // namespace

constinit const ClassDecl kServicesModule = {
    .name = "Services",
    .children = kServicesChildren,
    .args = kServicesArgs,
    .description = "The system's services, their state and how they start."};

}  // namespace kestra
