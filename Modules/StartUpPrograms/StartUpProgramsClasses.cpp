#include "Modules/StartUpPrograms/StartUpProgramsClasses.h"

namespace kestra {
namespace {

using enum ParamType;

constexpr ParamDecl kStartUpProgramParams[] = {
    {"ImageName", String},
    {"ProgramName", String},
    {"ProgramPath", String},
    {"IsExist", Dword},
    {"IsEnabled", Dword, nullptr, true},
    {"IsWOW64", Dword},
    {"FileVersion", Version},
    {"ProductName", String},
    {"Description", String},
    {"ProductVersion", Version},
    {"CompanyName", String},
    {"CommandLine", String},
    {"RunningFrom", String},
    // "Windous" is how queries spell these two places; it stays.
    {"LocationID", Enum,
     "Common_Startup|Startup|HKLM_Run|HKLM_RunOnce|HKLM_RunOnce_Setup|HKLM_RunOnceEx|"
     "HKLM_RunServices|HKLM_RunServicesOnce|HKLM_ExplorerRun|HKLMNT_Winlogon_UserInit|"
     "HKLMNT_Winlogon_Shell|HKCU_Run|HKCU_RunOnce|HKCU_RunOnceEx|HKCU_RunServices|"
     "HKCU_RunServicesOnce|HKCU_ExplorerRun|HKCUNT_Windous_Load|HKCUNT_Windous_Run|Winini_Load|"
     "Winini_Run|Systemini_Shell"},
};

constinit const ClassDecl kStartUpProgram = {.name = "StartUpProgram",
                                             .params = kStartUpProgramParams,
                                             .canBeAddedAndDeleted = true,
                                             .description = "A program that is started by itself."};

constexpr const ClassDecl* kStartUpProgramsChildren[] = {&kStartUpProgram};
constexpr ArgDecl kStartUpProgramsArgs[] = {{"ShowDisabled", Dword}};

}  // namespace

constinit const ClassDecl kStartUpProgramsModule = {
    .name = "StartUpPrograms",
    .children = kStartUpProgramsChildren,
    .args = kStartUpProgramsArgs,
    .description = "What the machine starts on its own, and where that is written down."};

}  // namespace kestra
